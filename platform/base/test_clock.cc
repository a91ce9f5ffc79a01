#include "base/test_clock.h"

#include <atomic>

#include "base/clock.h"
#include "base/sleeper.h"

namespace base {

class TestClock::ManualClock : public Clock {
 public:
  explicit ManualClock(const Clock& origin)
      : start_(origin.Now()), start_uptime_(origin.Uptime()) {}

  Time Now() const override { return start_.load() + Passed(); }
  TimeDelta Uptime() const override { return start_uptime_ + Passed(); }
  void WaitUntil(Lock& lock, ConditionVariable& changed, TimeDelta /*deadline*/) const override
      EXCLUSIVE_LOCKS_REQUIRED(lock) {
    changed.Wait(lock);  // The uptime moves in Advance only, which wakes all sleepers.
  }

  void Add(TimeDelta delta) { passed_microseconds_ += delta.InMicroseconds(); }
  void SetTimeOfDay(Time time) { start_ = time + (TimeDelta() - Passed()); }

 private:
  TimeDelta Passed() const { return TimeDelta::FromMicroseconds(passed_microseconds_); }

  std::atomic<Time> start_;
  const TimeDelta start_uptime_;
  std::atomic<int64_t> passed_microseconds_{0};
};

TestClock::TestClock() : clock_(std::make_shared<ManualClock>(*Clock::Get())) {
  Clock::Replace(clock_);
}

TestClock::~TestClock() { Clock::Replace(nullptr); }

void TestClock::Advance(TimeDelta delta) {
  clock_->Add(delta);
  Sleeper::RecheckDeadlines();
}

void TestClock::SetTimeOfDay(Time time) { clock_->SetTimeOfDay(time); }

void TestClock::WaitForSleepers(int count) { Sleeper::WaitForSleepers(count); }

}  // namespace base
