#include "base/simple_thread.h"

#include <cassert>

#include "base/platform_thread.h"

namespace base {

SimpleThread::SimpleThread(const std::string& name) : name_(name) {}

SimpleThread::~SimpleThread() { assert(!thread_.joinable()); }

void SimpleThread::Start() {
  assert(!thread_.joinable());
  thread_ = std::thread(&SimpleThread::ThreadMain, this);
  // Waits until the thread runs and has its name, so that the caller can rely on both.
  AutoLock hold(lock_);
  while (!runs_) changed_.Wait(lock_);
}

void SimpleThread::Join() { thread_.join(); }

void SimpleThread::ThreadMain() {
  PlatformThread::SetName(name_);
  {
    AutoLock hold(lock_);
    runs_ = true;
    changed_.NotifyAll();
  }
  Run();
}

}  // namespace base
