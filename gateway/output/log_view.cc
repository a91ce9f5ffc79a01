#include "gateway/output/log_view.h"

#include <algorithm>
#include <string>

#include "base/logging.h"

namespace gateway {
namespace {

const char* SeverityName(int severity) {
  constexpr const char* kNames[] = {"VERBOSE", "DETAILED_INFO", "INTERNAL_INFO", "INFO",
                                    "WARNING", "ERROR",         "ERROR_REPORT",  "FATAL"};
  return kNames[std::clamp<int>(severity, logging::LOG_VERBOSE, logging::LOG_FATAL) -
                logging::LOG_VERBOSE];
}

}  // namespace

LogView::LogView(Printer* printer, bool always, bool also_written,
                 const std::function<void(const std::string& line)>& on_line) {
  logging::SetLogMessageHandler(
      [this, printer, always, also_written, on_line](int severity, const char*, int, size_t,
                                                     const std::string& text) {
        on_line(text);
        // False leaves the line to the log file or to standard error.
        if (!always && !following_) return false;
        // The line comes with its line break, which the printer adds itself.
        printer->LogLine(SeverityName(severity), text.substr(0, text.find_last_not_of('\n') + 1));
        return !also_written;
      });
}

LogView::~LogView() { logging::SetLogMessageHandler({}); }

}  // namespace gateway
