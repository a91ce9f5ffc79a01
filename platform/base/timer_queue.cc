#include "base/timer_queue.h"

#include "base/clock.h"
#include "base/timer.h"

namespace base {
namespace internal {

uint64_t TimerQueue::Add(TimeDelta due, Timer* timer, Entry entry) {
  const uint64_t number = ++last_number_;
  if (entry) {
    entry.key() = {due, number};
    entries_.insert(std::move(entry));
  } else {
    entries_.emplace(std::pair(due, number), timer);
  }
  return number;
}

TimerQueue::Entry TimerQueue::Remove(TimeDelta due, uint64_t number) {
  return entries_.extract({due, number});
}

std::optional<TimeDelta> TimerQueue::NextDue() const {
  if (entries_.empty()) return std::nullopt;
  return entries_.begin()->first.first;
}

bool TimerQueue::RunNextDue() {
  const std::optional<TimeDelta> due = NextDue();
  if (!due || *due > Clock::Get()->Uptime()) return false;
  Entry entry = entries_.extract(entries_.begin());
  Timer* const timer = entry.mapped();
  timer->Fire(std::move(entry));
  return true;
}

}  // namespace internal
}  // namespace base
