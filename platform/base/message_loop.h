// The base library: message loops, threads and locks, timers and the clock they share, logging,
// JSON, event payloads, and small helpers. It uses nothing of the platform's other folders.
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

// Runs tasks and timers one after another on the thread that made it; a thread has at most one loop
// at a time. An idle loop sleeps. Everything but PostTask is called on that thread.
class MessageLoop {
 public:
  MessageLoop();
  // Destroys the remaining tasks without running them.
  ~MessageLoop();
  MessageLoop(const MessageLoop&) = delete;
  MessageLoop& operator=(const MessageLoop&) = delete;

  // The calling thread's loop; null if it has none.
  static MessageLoop* current();

  // Appends a task to the queue. Any thread, also before Run. The loop must not be destroyed
  // meanwhile.
  void PostTask(const tracked_objects::Location& from_here, base::Closure task);

  // Runs tasks, first in, first out, and due timers until Quit. A task must not call it.
  void Run();

  // Makes Run return once the tasks that are now queued have run; tasks posted later wait for the
  // next Run. No timer fires any more. Does nothing outside Run.
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
  // Used by the loop's thread only.
  bool running_ = false;
  bool quitting_ = false;
  std::shared_ptr<base::internal::TimerQueue> timers_;
};

#endif  // QORN_PLATFORM_BASE_MESSAGE_LOOP_H_
