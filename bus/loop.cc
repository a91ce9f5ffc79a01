#include "bus/loop.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <utility>

namespace bus {
namespace {

constexpr int kMessagesInARow = 64;

// sd-bus gives its own deadlines as microseconds of CLOCK_MONOTONIC, the steady clock's source.
Loop::Clock::time_point FromMicroseconds(uint64_t time) {
  return Loop::Clock::time_point(std::chrono::microseconds(time));
}

}  // namespace

Loop::Loop() : wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void Loop::Post(Task task) {
  bool first = false;
  {
    base::AutoLock hold(lock_);
    first = tasks_.empty();
    tasks_.push_back(std::move(task));
  }
  if (first) eventfd_write(wake_.get(), 1);
}

void Loop::Quit() {
  Post([this] { quit_ = true; });
}

void Loop::PostAt(Clock::time_point when, Task task) { timers_.emplace(when, std::move(task)); }

void Loop::Use(sd_bus* connection, std::function<void(int)> on_lost) {
  connection_ = connection;
  on_lost_ = std::move(on_lost);
}

void Loop::Run() {
  while (!quit_) {
    RunTasks();
    RunTimers();
    const bool idle = ProcessMessages();
    if (!quit_) Wait(idle);
  }
}

void Loop::RunTasks() {
  std::vector<Task> tasks;
  {
    base::AutoLock hold(lock_);
    tasks.swap(tasks_);
  }
  for (const Task& task : tasks) task();
}

void Loop::RunTimers() {
  while (!timers_.empty() && timers_.begin()->first <= Clock::now()) {
    const Task task = std::move(timers_.begin()->second);
    timers_.erase(timers_.begin());
    task();
  }
}

bool Loop::ProcessMessages() {
  for (int i = 0; i < kMessagesInARow; ++i) {
    if (connection_ == nullptr) return true;
    const int result = sd_bus_process(connection_, nullptr);
    if (result < 0) Lose(-result);
    if (result <= 0) return true;
  }
  return false;
}

void Loop::Wait(bool idle) {
  pollfd fds[] = {{wake_.get(), POLLIN, 0}, {-1, 0, 0}};
  Clock::time_point until = Clock::time_point::max();
  if (!timers_.empty()) until = timers_.begin()->first;
  if (connection_ != nullptr) {
    const int events = sd_bus_get_events(connection_);
    if (events < 0) return Lose(-events);
    fds[1] = {sd_bus_get_fd(connection_), static_cast<short>(events), 0};
    uint64_t timeout = 0;
    if (sd_bus_get_timeout(connection_, &timeout) > 0 && timeout != UINT64_MAX) {
      until = std::min(until, FromMicroseconds(timeout));
    }
  }
  int milliseconds = idle ? -1 : 0;
  if (idle && until != Clock::time_point::max()) {
    // Rounded up, so that nothing wakes before its time. Not ppoll: fortified, glibc 2.36 hands
    // 64-bit times to the function that takes 32 bits.
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now());
    milliseconds = static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, INT_MAX));
  }
  poll(fds, 2, milliseconds);
  eventfd_t count = 0;
  if (fds[0].revents != 0) eventfd_read(wake_.get(), &count);
}

void Loop::Lose(int error) {
  connection_ = nullptr;
  const auto on_lost = std::exchange(on_lost_, nullptr);
  if (on_lost) on_lost(error);
}

}  // namespace bus
