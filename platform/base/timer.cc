#include "base/timer.h"

#include "base/clock.h"
#include "base/message_loop.h"

namespace base {

Timer::Timer(bool retain_user_task, bool is_repeating)
    : retain_user_task_(retain_user_task), is_repeating_(is_repeating) {}

Timer::~Timer() { Cancel(); }

void Timer::Start(const tracked_objects::Location& from_here, TimeDelta delay, Closure task) {
  Cancel();
  posted_from_ = from_here;
  delay_ = delay;
  task_ = task ? std::make_shared<const Closure>(std::move(task)) : nullptr;
  Reset();
}

void Timer::Stop() {
  Cancel();
  if (!retain_user_task_) task_ = nullptr;
}

void Timer::Reset() {
  Cancel();
  if (task_) Schedule();
}

bool Timer::IsRunning() const { return number_ != 0 && !queue_.expired(); }

void Timer::Schedule() {
  const MessageLoop* loop = MessageLoop::current();
  if (loop == nullptr) return;
  queue_ = loop->timers_;
  due_ = Clock::Get()->Uptime() + delay_;
  number_ = loop->timers_->Add(due_, this, std::move(entry_));
}

void Timer::Cancel() {
  const auto queue = queue_.lock();
  if (queue && number_ != 0) entry_ = queue->Remove(due_, number_);
  number_ = 0;
}

void Timer::Fire(internal::TimerQueue::Entry entry) {
  number_ = 0;
  entry_ = std::move(entry);
  const std::shared_ptr<const Closure> task = task_;
  if (is_repeating_) {
    Schedule();  // Before the task runs, so that its duration does not lengthen the period.
  } else if (!retain_user_task_) {
    task_ = nullptr;
  }
  // Called through the copy: the task may destroy this timer, or start it with another task.
  (*task)();
}

}  // namespace base
