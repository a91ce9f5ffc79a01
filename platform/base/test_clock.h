#ifndef QORN_PLATFORM_BASE_TEST_CLOCK_H_
#define QORN_PLATFORM_BASE_TEST_CLOCK_H_

#include <memory>

#include "base/time.h"

namespace base {

// For tests: a clock that stands still until it is moved. It starts with the present and is the
// process's clock until it is destroyed; only one may exist at a time. Any thread.
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

  // Moves the time of day and the uptime forward. Timers and sleeps that are then due wake up; this
  // function does not wait for them.
  void Advance(TimeDelta delta);

  // Sets the time of day alone, back or ahead by any time, as on a machine that starts without
  // knowing it. Nothing wakes up: timers and sleeps go by the uptime.
  void SetTimeOfDay(Time time);

  // Returns once at least `count` threads wait for the clock: message loops with a timer that is
  // not yet due, and threads in PlatformThread::Sleep. A thread whose time has come, or whose loop
  // has a task to run, does not count, even if it has not woken up yet. Loops without a timer never
  // count.
  void WaitForSleepers(int count);

 private:
  class ManualClock;

  std::shared_ptr<ManualClock> clock_;
};

}  // namespace base

#endif  // QORN_PLATFORM_BASE_TEST_CLOCK_H_
