#include "gateway/service/workers.h"

#include <system_error>
#include <utility>

namespace gateway {

Workers::~Workers() {
  {
    base::AutoLock hold(lock_);
    ending_ = true;
  }
  changed_.NotifyAll();
  for (std::thread& thread : threads_) thread.join();
}

void Workers::Post(uid_t user, Task task) {
  bool more = false;
  {
    base::AutoLock hold(lock_);
    tasks_.push_back({.user = user, .run = std::move(task)});
    more = idle_ < tasks_.size() && threads_.size() < most_;
  }
  if (more) StartThread();
  changed_.NotifyOne();
}

void Workers::StartThread() {
  try {
    threads_.emplace_back([this] { Run(); });
  } catch (const std::system_error&) {
    // No more threads can be started: those that run do the work, or else the caller does.
    if (!threads_.empty()) return;
    Task task;
    {
      base::AutoLock hold(lock_);
      task = std::move(tasks_.front().run);
      tasks_.pop_front();
    }
    task();
  }
}

void Workers::Run() {
  UsersTask task;
  while (Take(&task)) {
    task.run();
    task.run = nullptr;
    Leave(task.user);
  }
}

bool Workers::Take(UsersTask* task) {
  base::AutoLock hold(lock_);
  auto next = FindNext();
  while (next == tasks_.end()) {
    if (ending_ && tasks_.empty()) return false;
    ++idle_;
    changed_.Wait(lock_);
    --idle_;
    next = FindNext();
  }
  *task = std::move(*next);
  tasks_.erase(next);
  ++running_[task->user];
  // Those that wait for another task look again whether there will be one.
  if (ending_) changed_.NotifyAll();
  return true;
}

void Workers::Leave(uid_t user) {
  base::AutoLock hold(lock_);
  const auto running = running_.find(user);
  if (--running->second == 0) running_.erase(running);
}

std::deque<Workers::UsersTask>::iterator Workers::FindNext() {
  for (auto task = tasks_.begin(); task != tasks_.end(); ++task) {
    const auto running = running_.find(task->user);
    if (running == running_.end() || running->second < most_of_a_user_) return task;
  }
  return tasks_.end();
}

}  // namespace gateway
