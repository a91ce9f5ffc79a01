#ifndef QORN_PLATFORM_BASE_TIMER_QUEUE_H_
#define QORN_PLATFORM_BASE_TIMER_QUEUE_H_

#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include "base/bind.h"
#include "base/time.h"

namespace base {
namespace internal {

// The running timers of one message loop, by the uptime at which they are due. For the loop's
// thread only.
class TimerQueue {
 public:
  // Answers the entry's number, never 0.
  uint64_t Add(TimeDelta due, Closure fire);
  void Remove(TimeDelta due, uint64_t number);

  std::optional<TimeDelta> NextDue() const;
  // Takes out the first entry and runs it, if it is due; true if it was.
  bool RunNextDue();

 private:
  std::map<std::pair<TimeDelta, uint64_t>, Closure> entries_;
  uint64_t last_number_ = 0;
};

}  // namespace internal
}  // namespace base

#endif  // QORN_PLATFORM_BASE_TIMER_QUEUE_H_
