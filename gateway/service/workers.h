// Threads for what must not hold up the bus's thread.
#ifndef QORN_GATEWAY_SERVICE_WORKERS_H_
#define QORN_GATEWAY_SERVICE_WORKERS_H_

#include <sys/types.h>

#include <deque>
#include <functional>
#include <map>
#include <thread>
#include <vector>

#include "base/condition_variable.h"
#include "base/lock.h"
#include "base/thread_annotations.h"

namespace gateway {

class Workers {
 public:
  using Task = std::function<void()>;

  // Starts threads when tasks come, `most` of them. No user's tasks run on more than
  // `most_of_a_user` at once, so that others find one when all of that user's are stalled.
  Workers(size_t most, size_t most_of_a_user) : most_(most), most_of_a_user_(most_of_a_user) {}
  // Waits for all tasks.
  ~Workers();
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;

  // A user's tasks start in the order in which they were posted. One thread posts.
  void Post(uid_t user, Task task);

 private:
  struct UsersTask {
    uid_t user = 0;
    Task run;
  };

  void StartThread();
  void Run();
  // Waits for a task that may run. False once there will be none.
  bool Take(UsersTask* task);
  void Leave(uid_t user);
  // The first task whose user has not enough of them running.
  std::deque<UsersTask>::iterator FindNext() EXCLUSIVE_LOCKS_REQUIRED(lock_);

  const size_t most_, most_of_a_user_;
  std::vector<std::thread> threads_;
  base::Lock lock_;
  base::ConditionVariable changed_;
  std::deque<UsersTask> tasks_ GUARDED_BY(lock_);
  std::map<uid_t, size_t> running_ GUARDED_BY(lock_);
  size_t idle_ GUARDED_BY(lock_) = 0;
  bool ending_ GUARDED_BY(lock_) = false;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_SERVICE_WORKERS_H_
