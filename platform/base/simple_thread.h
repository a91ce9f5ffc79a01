#ifndef QORN_PLATFORM_BASE_SIMPLE_THREAD_H_
#define QORN_PLATFORM_BASE_SIMPLE_THREAD_H_

#include <string>
#include <thread>

#include "base/condition_variable.h"
#include "base/lock.h"
#include "base/thread_annotations.h"

namespace base {

// A thread that runs one function of a subclass. The owning thread calls Start and Join, each
// exactly once, and Join before it destroys the object.
class SimpleThread {
 public:
  // The kernel shows the first 15 bytes of the name.
  explicit SimpleThread(const std::string& name);
  virtual ~SimpleThread();
  SimpleThread(const SimpleThread&) = delete;
  SimpleThread& operator=(const SimpleThread&) = delete;

  // The thread's work, on the new thread.
  virtual void Run() = 0;

  // Returns once the new thread runs. Throws std::system_error if no thread can be created.
  void Start();
  // Returns once Run has returned.
  void Join();

 private:
  void ThreadMain();

  const std::string name_;
  std::thread thread_;
  Lock lock_;
  ConditionVariable changed_;
  bool runs_ GUARDED_BY(lock_) = false;
};

}  // namespace base

#endif  // QORN_PLATFORM_BASE_SIMPLE_THREAD_H_
