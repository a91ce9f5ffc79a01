// The one clock of the process, used by Time::Now, message loops, timers and PlatformThread::Sleep.
// A test can replace it (base/test_clock.h) and so decide when time passes, even for components
// that are loaded with dlopen.
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
  // Time since an arbitrary moment. It never goes back; all waiting is measured by it.
  virtual TimeDelta Uptime() const = 0;
  // Waits for `changed`, at most until Uptime() reaches `deadline`. May return early.
  virtual void WaitUntil(Lock& lock, ConditionVariable& changed, TimeDelta deadline) const
      EXCLUSIVE_LOCKS_REQUIRED(lock) = 0;

  // The current clock, never null. It stays valid as long as the pointer is held, even if it is
  // replaced meanwhile.
  static std::shared_ptr<const Clock> Get();
  // Makes `clock` the current clock, or the real one if it is null. Waiting threads continue with
  // the new clock, so its uptime must not be behind the old one's; the real clock takes care of
  // that itself.
  static void Replace(std::shared_ptr<const Clock> clock);
};

}  // namespace base

#endif  // QORN_PLATFORM_BASE_CLOCK_H_
