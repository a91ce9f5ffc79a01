// What connects the process with the system around it: signals, service manager, environment, and
// the options of its own HTTP requests.
//
// Here: SIGINT and SIGTERM as a request to stop, SIGHUP as a request to reopen files.
#ifndef QORN_GATEWAY_PROCESS_SIGNALS_H_
#define QORN_GATEWAY_PROCESS_SIGNALS_H_

#include <chrono>
#include <functional>
#include <thread>

#include "base/scoped_fd.h"

namespace gateway {

// Takes the signals on a thread of its own, so that no code runs inside a handler. The first SIGINT
// or SIGTERM asks the program to stop; a second ends the process at once, by the signal's default
// action.
//
// Make it before any other thread: the signals are blocked in the calling thread and in every
// thread that it starts later, and stay blocked afterwards.
class StopSignals {
 public:
  // Both run on the watching thread: `on_first` at the first request to stop, `on_hangup` at each
  // SIGHUP before it.
  StopSignals(std::function<void()> on_first, std::function<void()> on_hangup);
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

  // For poll(): readable from the first request to stop on. Never read from it. Any thread.
  int stop_fd() const { return stop_.get(); }

  // Waits for a request to stop, at most for `time` (zero only checks); true when there is one. Any
  // thread.
  bool WaitForStop(std::chrono::milliseconds time) const;

 private:
  void Watch();
  // The next signal's number; 0 when the watching thread is to end.
  int NextSignal() const;

  const std::function<void()> on_first_;
  const std::function<void()> on_hangup_;
  base::ScopedFd signals_;
  base::ScopedFd stop_;
  base::ScopedFd quit_;
  std::thread watcher_;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_PROCESS_SIGNALS_H_
