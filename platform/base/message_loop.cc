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
  // A task's destructor may use the loop, so it runs while the loop still works, and without the
  // lock.
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
    // One of each in turn, so that neither a flood of tasks nor a busy timer starves the other.
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
  AddTask({nullptr, true});  // Behind the tasks that are queued now, which still run.
}

void MessageLoop::AddTask(Task task) {
  // Wake while holding the lock: once the task is visible, it may destroy the loop.
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
