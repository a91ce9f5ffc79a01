#include "base/timer.h"

#include "base/clock.h"
#include "base/message_loop.h"
#include "base/timer_queue.h"

namespace base {

Timer::Timer(bool retain_user_task, bool is_repeating)
    : retain_user_task_(retain_user_task), is_repeating_(is_repeating) {}

Timer::~Timer() { Cancel(); }

void Timer::Start(const tracked_objects::Location& /*from_here*/, TimeDelta delay, Closure task) {
  delay_ = delay;
  task_ = std::move(task);
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
  number_ = loop->timers_->Add(due_, Bind(&Timer::Fire, Unretained(this)));
}

void Timer::Cancel() {
  if (const auto queue = queue_.lock()) queue->Remove(due_, number_);
  number_ = 0;
}

void Timer::Fire() {
  number_ = 0;
  const Closure task = task_;
  if (is_repeating_) {
    Schedule();
  } else if (!retain_user_task_) {
    task_ = nullptr;
  }
  // The task may destroy this timer.
  task();
}

}  // namespace base
