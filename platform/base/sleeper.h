// How a thread of the platform waits: until it is woken or until the clock reaches a deadline.
#ifndef QORN_PLATFORM_BASE_SLEEPER_H_
#define QORN_PLATFORM_BASE_SLEEPER_H_

#include <optional>

#include "base/condition_variable.h"
#include "base/lock.h"
#include "base/time.h"

namespace base {

// One thread sleeps, any thread wakes it. Sleeping never allocates.
class Sleeper {
 public:
  Sleeper() = default;
  Sleeper(const Sleeper&) = delete;
  Sleeper& operator=(const Sleeper&) = delete;

  // Returns once Wake has been called since the last return, or once the clock's uptime has reached
  // `deadline`.
  void SleepUntil(std::optional<TimeDelta> deadline);
  void Wake();

  // Makes every sleeping thread of the process check the clock again.
  static void RecheckDeadlines();
  // Returns once at least `count` threads are asleep with a deadline that the clock has not
  // reached.
  static void WaitForSleepers(int count);

 private:
  friend struct SleeperList;

  void WaitUntilDue();
  bool IsArmed(TimeDelta uptime);

  Lock lock_;
  ConditionVariable changed_;
  bool woken_ GUARDED_BY(lock_) = false;
  std::optional<TimeDelta> deadline_ GUARDED_BY(lock_);
  Sleeper* next_ = nullptr;  // In the list of sleepers, guarded by that list's lock.
};

}  // namespace base

#endif  // QORN_PLATFORM_BASE_SLEEPER_H_
