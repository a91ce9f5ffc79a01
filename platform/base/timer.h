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

// Runs a task later, once or again and again. It belongs to the message loop of the thread that
// started it: that thread alone uses and destroys it, and the task runs there. It may outlive the
// loop, and the task may stop, restart or destroy it. Start alone needs memory: what it throws
// leaves the timer stopped.
class Timer {
 public:
  // With `retain_user_task` the task survives Stop and the end of a timer that runs once, so that
  // Reset can start it again.
  Timer(bool retain_user_task, bool is_repeating);
  // Cancels the timer.
  ~Timer();
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

  // Runs `task` one `delay` from now; a running timer starts anew. A repeating timer runs next one
  // delay after the moment its last run began: a run that comes late is not made up for. Does
  // nothing on a thread without a message loop.
  void Start(const tracked_objects::Location& from_here, TimeDelta delay, Closure task);
  // No run begins any more.
  void Stop();
  // Starts again with the delay and the task of the last Start; nothing without a task.
  void Reset();
  bool IsRunning() const;

 private:
  friend class internal::TimerQueue;

  void Schedule();
  void Cancel();
  void Fire(internal::TimerQueue::Entry entry);

  const bool retain_user_task_;
  const bool is_repeating_;
  TimeDelta delay_;
  std::shared_ptr<const Closure> task_;  // Shared with the run that is under way.
  std::weak_ptr<internal::TimerQueue> queue_;
  TimeDelta due_;
  uint64_t number_ = 0;  // With `due_` this timer's place in `queue_`; 0 when it does not run.
  internal::TimerQueue::Entry entry_;  // While it does not run, once it has.
};

}  // namespace base

#endif  // QORN_PLATFORM_BASE_TIMER_H_
