// Threads for what must not hold up the bus's thread.
#ifndef QORN_GATEWAY_SERVICE_WORKERS_H_
#define QORN_GATEWAY_SERVICE_WORKERS_H_

#include <deque>
#include <functional>
#include <thread>
#include <vector>

#include "base/condition_variable.h"
#include "base/lock.h"
#include "base/thread_annotations.h"

namespace gateway {

class Workers {
 public:
  using Task = std::function<void()>;

  // Starts threads when tasks come, `most` of them.
  explicit Workers(size_t most) : most_(most) {}
  // Waits for all tasks.
  ~Workers();
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;

  // Tasks start in the order in which they were posted. One thread posts.
  void Post(Task task);

 private:
  void StartThread();
  void Run();

  const size_t most_;
  std::vector<std::thread> threads_;
  base::Lock lock_;
  base::ConditionVariable changed_;
  std::deque<Task> tasks_ GUARDED_BY(lock_);
  size_t idle_ GUARDED_BY(lock_) = 0;
  bool ending_ GUARDED_BY(lock_) = false;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_SERVICE_WORKERS_H_
