#ifndef QORN_PLATFORM_BASE_CONDITION_VARIABLE_H_
#define QORN_PLATFORM_BASE_CONDITION_VARIABLE_H_

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "base/lock.h"
#include "base/thread_annotations.h"

namespace base {

// A condition variable for base::Lock. A wait releases the lock while it sleeps and holds it again
// on return. It may wake up spuriously: call it in a loop. Any thread.
class ConditionVariable {
 public:
  ConditionVariable() = default;
  ConditionVariable(const ConditionVariable&) = delete;
  ConditionVariable& operator=(const ConditionVariable&) = delete;

  void Wait(Lock& lock) EXCLUSIVE_LOCKS_REQUIRED(lock) {
    std::unique_lock<std::mutex> held(lock.mutex_, std::adopt_lock);
    condition_.wait(held);
    held.release();
  }

  // In real time, even if a test has replaced the clock. Platform code waits through base::Sleeper.
  void WaitFor(Lock& lock, std::chrono::microseconds longest) EXCLUSIVE_LOCKS_REQUIRED(lock) {
    std::unique_lock<std::mutex> held(lock.mutex_, std::adopt_lock);
    condition_.wait_until(held, std::chrono::steady_clock::now() + longest);
    held.release();
  }

  void NotifyOne() { condition_.notify_one(); }
  void NotifyAll() { condition_.notify_all(); }

 private:
  std::condition_variable condition_;
};

}  // namespace base

#endif  // QORN_PLATFORM_BASE_CONDITION_VARIABLE_H_
