#ifndef QORN_PLATFORM_BASE_TIMER_H_
#define QORN_PLATFORM_BASE_TIMER_H_

#include <cstdint>
#include <memory>
#include <utility>

#include "base/bind.h"
#include "base/location.h"
#include "base/time.h"
#include "base/timer_queue.h"

namespace base {

// Runs a task later, once or repeatedly. It belongs to the message loop of the thread that started
// it: only that thread uses and destroys it, and the task runs there. It may outlive the loop, and
// the task may stop, restart or destroy it. Only Start allocates; if it throws, the timer is
// stopped.
class Timer {
 public:
  // With `retain_user_task` the task is kept after Stop, and after the only run of a timer that
  // does not repeat, so that Reset can start it again.
  Timer(bool retain_user_task, bool is_repeating);
  // Cancels the timer.
  ~Timer();
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

  // Runs `task` after `delay`; restarts a running timer. A repeating timer runs again one delay
  // after the start of its last run: a late run is not made up for. Does nothing on a thread
  // without a message loop.
  void Start(const tracked_objects::Location& from_here, TimeDelta delay, Closure task);
  // No further run begins.
  void Stop();
  // Starts again with the delay and the task of the last Start; does nothing without a task.
  void Reset();
  bool IsRunning() const;
  // The location that was passed to the last Start, for people who debug what a thread waits for.
  const tracked_objects::Location& posted_from() const { return posted_from_; }

 private:
  friend class internal::TimerQueue;

  void Schedule();
  void Cancel();
  void Fire(internal::TimerQueue::Entry entry);

  const bool retain_user_task_;
  const bool is_repeating_;
  tracked_objects::Location posted_from_{"", "", 0};
  TimeDelta delay_;
  std::shared_ptr<const Closure> task_;  // Shared with the run in progress.
  std::weak_ptr<internal::TimerQueue> queue_;
  TimeDelta due_;
  uint64_t number_ = 0;  // With `due_`, the timer's key in `queue_`; 0 if it is not running.
  internal::TimerQueue::Entry entry_;  // Kept for the next start while the timer is not running.
};

}  // namespace base

#endif  // QORN_PLATFORM_BASE_TIMER_H_
