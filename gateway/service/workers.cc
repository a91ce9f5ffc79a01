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

void Workers::Post(Task task) {
  bool more = false;
  {
    base::AutoLock hold(lock_);
    tasks_.push_back(std::move(task));
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
      task = std::move(tasks_.front());
      tasks_.pop_front();
    }
    task();
  }
}

void Workers::Run() {
  while (true) {
    Task task;
    {
      base::AutoLock hold(lock_);
      ++idle_;
      while (tasks_.empty() && !ending_) changed_.Wait(lock_);
      --idle_;
      if (tasks_.empty()) return;
      task = std::move(tasks_.front());
      tasks_.pop_front();
    }
    task();
  }
}

}  // namespace gateway
