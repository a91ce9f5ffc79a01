#ifndef QORN_PLATFORM_BASE_TIMER_QUEUE_H_
#define QORN_PLATFORM_BASE_TIMER_QUEUE_H_

#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include "base/time.h"

namespace base {

class Timer;

namespace internal {

// The running timers of one message loop, ordered by the uptime at which they are due. For the
// loop's thread only. A timer's entry is allocated once and then moves between timer and queue, so
// only the first start of a timer allocates.
class TimerQueue {
 public:
  using Entries = std::map<std::pair<TimeDelta, uint64_t>, Timer*>;
  using Entry = Entries::node_type;

  // Returns the entry's number, never 0. Allocates an entry if none is passed.
  uint64_t Add(TimeDelta due, Timer* timer, Entry entry);
  // Empty for an unknown number.
  Entry Remove(TimeDelta due, uint64_t number);

  std::optional<TimeDelta> NextDue() const;
  // If the first timer is due, removes its entry, fires the timer and returns true.
  bool RunNextDue();

 private:
  Entries entries_;
  uint64_t last_number_ = 0;
};

}  // namespace internal
}  // namespace base

#endif  // QORN_PLATFORM_BASE_TIMER_QUEUE_H_
