#ifndef QORN_PLATFORM_BASE_TEST_CLOCK_H_
#define QORN_PLATFORM_BASE_TEST_CLOCK_H_

#include <memory>

#include "base/time.h"

namespace base {

// For tests: a clock that stands still until it is moved. It is the process's clock from its
// construction, at which it shows the present, to its destruction; one at a time. Any thread.
//
//   base::TestClock clock;
//   ... start a thread that arms a timer of 60 seconds ...
//   clock.WaitForSleepers(1);  // The timer is armed and the thread asleep.
//   clock.Advance(base::TimeDelta::FromSeconds(60));
//   clock.WaitForSleepers(1);  // Its task has run and the timer is armed again.
class TestClock {
 public:
  TestClock();
  ~TestClock();
  TestClock(const TestClock&) = delete;
  TestClock& operator=(const TestClock&) = delete;

  // Moves the time of day and the uptime forward. Timers and sleeps that are due by then wake up;
  // it does not wait for what they do.
  void Advance(TimeDelta delta);

  // Returns once at least `count` threads wait on the clock: message loops whose next timer lies
  // ahead and threads in PlatformThread::Sleep. A thread whose time has come, or whose loop has a
  // task to run, does not count, also when it has not woken up yet. Loops without a timer never
  // count.
  void WaitForSleepers(int count);

 private:
  class ManualClock;

  std::shared_ptr<ManualClock> clock_;
};

}  // namespace base

#endif  // QORN_PLATFORM_BASE_TEST_CLOCK_H_
