// SIGINT and SIGTERM as a request to stop.
#ifndef QORN_GATEWAY_SIGNALS_H_
#define QORN_GATEWAY_SIGNALS_H_

#include <chrono>
#include <functional>
#include <thread>

#include "gateway/descriptor.h"

namespace gateway {

// Takes both signals on a thread of its own, so that no code runs inside a handler. The first asks
// the program to stop; a second ends the process at once, by the signal's default action.
//
// Make it before any other thread: the signals are blocked in the calling thread and in every
// thread that it starts later, and stay blocked afterwards.
class StopSignals {
 public:
  // `on_first` runs on the watching thread.
  explicit StopSignals(std::function<void()> on_first);
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

  // Readable from the first signal on, for poll(); never read from it. Any thread.
  int stop_fd() const { return stop_.get(); }

  // Waits until the time has passed (zero: looks only) or the first signal came; true when it came.
  // Any thread.
  bool WaitForStop(std::chrono::milliseconds time) const;

 private:
  void Watch();

  const std::function<void()> on_first_;
  Descriptor signals_;
  Descriptor stop_;
  Descriptor quit_;
  std::thread watcher_;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_SIGNALS_H_
