#include "base/timer_queue.h"

#include "base/clock.h"

namespace base {
namespace internal {

uint64_t TimerQueue::Add(TimeDelta due, Closure fire) {
  const uint64_t number = ++last_number_;
  entries_.emplace(std::pair(due, number), std::move(fire));
  return number;
}

void TimerQueue::Remove(TimeDelta due, uint64_t number) { entries_.erase({due, number}); }

std::optional<TimeDelta> TimerQueue::NextDue() const {
  if (entries_.empty()) return std::nullopt;
  return entries_.begin()->first.first;
}

bool TimerQueue::RunNextDue() {
  const std::optional<TimeDelta> due = NextDue();
  if (!due || *due > Clock::Get()->Uptime()) return false;
  const auto entry = entries_.extract(entries_.begin());
  entry.mapped()();
  return true;
}

}  // namespace internal
}  // namespace base
