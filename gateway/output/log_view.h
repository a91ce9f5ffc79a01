// Log lines shown between the console's own.
#ifndef QORN_GATEWAY_OUTPUT_LOG_VIEW_H_
#define QORN_GATEWAY_OUTPUT_LOG_VIEW_H_

#include <atomic>
#include <functional>
#include <string>

#include "gateway/output/printer.h"

namespace gateway {

// The process's log handler while it lives. Lines that are not shown go to the log file or to
// standard error, as without it. Thread-safe.
class LogView {
 public:
  // Borrows `printer`. `always` shows all lines: for a terminal without a log file, where lines on
  // standard error would be written over the prompt. `also_written` sends shown lines to the log as
  // well. `on_line` gets each line on the thread that logs it.
  LogView(Printer* printer, bool always, bool also_written,
          const std::function<void(const std::string& line)>& on_line);
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
