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

// The running timers of one message loop, by the uptime at which they are due. For the loop's
// thread only. A timer's entry is made once and then goes to and fro between timer and queue, so
// that only the first start of a timer needs memory.
class TimerQueue {
 public:
  using Entries = std::map<std::pair<TimeDelta, uint64_t>, Timer*>;
  using Entry = Entries::node_type;

  // Answers the entry's number, never 0. Makes an entry if it gets none.
  uint64_t Add(TimeDelta due, Timer* timer, Entry entry);
  // Empty for a number that is not there.
  Entry Remove(TimeDelta due, uint64_t number);

  std::optional<TimeDelta> NextDue() const;
  // Takes out the first entry and fires its timer, if it is due; true if it was.
  bool RunNextDue();

 private:
  Entries entries_;
  uint64_t last_number_ = 0;
};

}  // namespace internal
}  // namespace base

#endif  // QORN_PLATFORM_BASE_TIMER_QUEUE_H_
