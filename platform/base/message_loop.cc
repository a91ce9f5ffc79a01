#include "base/message_loop.h"

#include <cassert>
#include <utility>

#include "base/timer_queue.h"

namespace {

thread_local MessageLoop* g_current = nullptr;

}  // namespace

MessageLoop::MessageLoop() : timers_(std::make_shared<base::internal::TimerQueue>()) {
  assert(g_current == nullptr);
  g_current = this;
}

MessageLoop::~MessageLoop() {
  // A task's destruction may use the loop, so it happens while the loop is whole, without the lock.
  for (Task task; TakeTask(&task);) task = {};
  g_current = nullptr;
}

MessageLoop* MessageLoop::current() { return g_current; }

void MessageLoop::PostTask(const tracked_objects::Location& /*from_here*/, base::Closure task) {
  AddTask({std::move(task), false});
}

void MessageLoop::Run() {
  if (running_) return;
  running_ = true;
  for (;;) {
    const bool ran_timer = !quitting_ && timers_->RunNextDue();
    Task task;
    if (TakeTask(&task)) {
      if (task.ends_run) break;
      task.closure();
    } else if (!ran_timer) {
      sleeper_.SleepUntil(timers_->NextDue());
    }
  }
  running_ = false;
  quitting_ = false;
}

void MessageLoop::Quit() {
  if (!running_ || quitting_) return;
  quitting_ = true;
  AddTask({nullptr, true});
}

void MessageLoop::AddTask(Task task) {
  // The lock is held while waking: once the task can be taken it may end the loop's life.
  base::AutoLock hold(lock_);
  tasks_.push_back(std::move(task));
  sleeper_.Wake();
}

bool MessageLoop::TakeTask(Task* task) {
  base::AutoLock hold(lock_);
  if (tasks_.empty()) return false;
  *task = std::move(tasks_.front());
  tasks_.pop_front();
  return true;
}
