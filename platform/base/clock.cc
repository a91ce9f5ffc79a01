#include "base/clock.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <utility>

#include "base/sleeper.h"

namespace base {

namespace {

// Not std::chrono's clocks: its system clock has 32 bits in the C++ library of Debian's armhf.
TimeDelta ReadClock(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return TimeDelta::FromSeconds(now.tv_sec) + TimeDelta::FromMicroseconds(now.tv_nsec / 1000);
}

class RealClock : public Clock {
 public:
  explicit RealClock(TimeDelta uptime)
      : start_uptime_(uptime), start_(ReadClock(CLOCK_MONOTONIC)) {}

  Time Now() const override { return Time::UnixEpoch() + ReadClock(CLOCK_REALTIME); }

  TimeDelta Uptime() const override {
    return start_uptime_ + (ReadClock(CLOCK_MONOTONIC) - start_);
  }

  void WaitUntil(Lock& lock, ConditionVariable& changed, TimeDelta deadline) const override
      EXCLUSIVE_LOCKS_REQUIRED(lock) {
    // A deadline in the far future would overflow the system's clock.
    const TimeDelta longest = TimeDelta::FromSeconds(std::int64_t{24} * 60 * 60);
    const TimeDelta wait = std::min(deadline - Uptime(), longest);
    changed.WaitFor(lock, std::chrono::microseconds(wait.InMicroseconds()));
  }

 private:
  const TimeDelta start_uptime_;
  const TimeDelta start_;
};

struct CurrentClock {
  Lock lock;
  std::shared_ptr<const Clock> clock GUARDED_BY(lock) = std::make_shared<RealClock>(TimeDelta());
};

CurrentClock& GetCurrentClock() {
  // Never destroyed: threads may read the clock until the process ends.
  static CurrentClock* const current = new CurrentClock;
  return *current;
}

}  // namespace

Clock::~Clock() = default;

std::shared_ptr<const Clock> Clock::Get() {
  CurrentClock& current = GetCurrentClock();
  AutoLock hold(current.lock);
  return current.clock;
}

void Clock::Replace(std::shared_ptr<const Clock> clock) {
  CurrentClock& current = GetCurrentClock();
  {
    AutoLock hold(current.lock);
    // The uptime continues from its current value, so that a sleep in progress keeps its length.
    if (!clock) clock = std::make_shared<RealClock>(current.clock->Uptime());
    current.clock = std::move(clock);
  }
  Sleeper::RecheckDeadlines();
}

}  // namespace base
