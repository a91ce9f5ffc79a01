// The one clock of the process: Time::Now, message loops, timers and PlatformThread::Sleep go by
// it. A test replaces it (base/test_clock.h) and then decides when time passes, for components
// that were loaded with dlopen as well.
#ifndef QORN_PLATFORM_BASE_CLOCK_H_
#define QORN_PLATFORM_BASE_CLOCK_H_

#include <memory>

#include "base/condition_variable.h"
#include "base/lock.h"
#include "base/time.h"

namespace base {

// All operations may be called from any thread.
class Clock {
 public:
  virtual ~Clock();

  // The time of day. It may jump.
  virtual Time Now() const = 0;
  // Time since a moment of the clock's choice. It never goes back; all waiting is measured by it.
  virtual TimeDelta Uptime() const = 0;
  // Waits for `changed`, at most until Uptime() reaches `deadline`. May return early.
  virtual void WaitUntil(Lock& lock, ConditionVariable& changed, TimeDelta deadline) const
      EXCLUSIVE_LOCKS_REQUIRED(lock) = 0;

  // The clock in use, never null. It stays valid as long as the pointer is held, also when another
  // takes its place meanwhile.
  static std::shared_ptr<const Clock> Get();
  // Puts `clock`, or the real one for null, in place. Threads that wait go on by the new clock, so
  // its uptime must not lie behind that of the one before; the real one sees to it.
  static void Replace(std::shared_ptr<const Clock> clock);
};

}  // namespace base

#endif  // QORN_PLATFORM_BASE_CLOCK_H_
