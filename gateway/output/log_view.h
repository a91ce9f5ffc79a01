// The log's lines among the console's own.
#ifndef QORN_GATEWAY_OUTPUT_LOG_VIEW_H_
#define QORN_GATEWAY_OUTPUT_LOG_VIEW_H_

#include <atomic>

#include "gateway/output/printer.h"

namespace gateway {

// The process's log handler while it lives. Thread-safe. Lines that are not shown go where they
// went without it: to the log file or to standard error.
class LogView {
 public:
  // Borrows `printer`. `always` shows all lines, at a terminal without a log file: there they would
  // cross the prompt. `also_written` lets shown lines go to the log as well.
  LogView(Printer* printer, bool always, bool also_written);
  ~LogView();
  LogView(const LogView&) = delete;
  LogView& operator=(const LogView&) = delete;

  // Shows the lines, or stops showing them unless they are always shown.
  void Follow(bool follow) { following_ = follow; }

 private:
  std::atomic<bool> following_ = false;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_OUTPUT_LOG_VIEW_H_
