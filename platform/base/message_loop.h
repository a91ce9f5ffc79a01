#ifndef QORN_PLATFORM_BASE_MESSAGE_LOOP_H_
#define QORN_PLATFORM_BASE_MESSAGE_LOOP_H_

#include <deque>
#include <memory>

#include "base/bind.h"
#include "base/location.h"
#include "base/lock.h"
#include "base/sleeper.h"
#include "base/thread_annotations.h"

namespace base {
class Timer;
namespace internal {
class TimerQueue;
}
}  // namespace base

// Runs tasks and timers one after another on the thread that made it, which may have one loop at a
// time. An idle loop sleeps. All but PostTask belongs to that thread.
class MessageLoop {
 public:
  MessageLoop();
  // Tasks left over are destroyed without running.
  ~MessageLoop();
  MessageLoop(const MessageLoop&) = delete;
  MessageLoop& operator=(const MessageLoop&) = delete;

  // The calling thread's loop; null if it has none.
  static MessageLoop* current();

  // Adds a task behind those already there. Any thread, also before Run; the loop must live.
  void PostTask(const tracked_objects::Location& from_here, base::Closure task);

  // Runs tasks, first in, first out, and due timers until Quit. Not to be called by a task.
  void Run();

  // Ends Run once the tasks that are queued now have run; tasks posted later wait for the next
  // Run. No timer fires any more. Does nothing outside Run.
  void Quit();

 private:
  friend class base::Timer;

  struct Task {
    base::Closure closure;
    bool ends_run = false;
  };

  void AddTask(Task task);
  bool TakeTask(Task* task);

  base::Lock lock_;
  std::deque<Task> tasks_ GUARDED_BY(lock_);
  base::Sleeper sleeper_;
  // Touched by the loop's thread only.
  bool running_ = false;
  bool quitting_ = false;
  std::shared_ptr<base::internal::TimerQueue> timers_;
};

#endif  // QORN_PLATFORM_BASE_MESSAGE_LOOP_H_
