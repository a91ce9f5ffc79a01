// The one thread that touches a connection: it processes the connection's messages, and what other
// threads ask it to do in between.
#ifndef QORN_BUS_LOOP_H_
#define QORN_BUS_LOOP_H_

#include <systemd/sd-bus.h>

#include <chrono>
#include <functional>
#include <map>
#include <vector>

#include "base/lock.h"
#include "base/scoped_fd.h"
#include "base/thread_annotations.h"

namespace bus {

class Loop {
 public:
  using Clock = std::chrono::steady_clock;
  using Task = std::function<void()>;

  Loop();
  Loop(const Loop&) = delete;
  Loop& operator=(const Loop&) = delete;

  // Runs the task on the loop's thread, after those that were posted before. Any thread.
  void Post(Task task);
  // Makes Run return after the tasks that were posted before. Any thread.
  void Quit();

  // On the loop's thread from here on, or before it runs.

  void PostAt(Clock::time_point when, Task task);
  // Processes this connection's messages, borrowed, from now on; none for null. `on_lost` gets a
  // positive errno once the connection fails; the loop has let go of it by then.
  void Use(sd_bus* connection, std::function<void(int)> on_lost);
  void Run();

 private:
  void RunTasks();
  void RunTimers();
  // False when it has stopped with messages left, so that tasks get their turn.
  bool ProcessMessages();
  // For messages, tasks and timers; only looks for them when it is not `idle`.
  void Wait(bool idle);
  void Lose(int error);

  base::Lock lock_;
  std::vector<Task> tasks_ GUARDED_BY(lock_);
  const base::ScopedFd wake_;
  std::multimap<Clock::time_point, Task> timers_;
  sd_bus* connection_ = nullptr;
  std::function<void(int)> on_lost_;
  bool quit_ = false;
};

}  // namespace bus

#endif  // QORN_BUS_LOOP_H_
