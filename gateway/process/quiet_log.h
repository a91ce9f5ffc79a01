#ifndef QORN_GATEWAY_PROCESS_QUIET_LOG_H_
#define QORN_GATEWAY_PROCESS_QUIET_LOG_H_

#include <string>

#include "base/logging.h"

namespace gateway {

// Drops all log lines while it lives: a component's would stand between those of a command. Declare
// it before the host, which logs until it is destroyed.
class QuietLog {
 public:
  QuietLog() {
    logging::SetLogMessageHandler(
        [](int, const char*, int, size_t, const std::string&) { return true; });
  }
  ~QuietLog() { logging::SetLogMessageHandler({}); }
  QuietLog(const QuietLog&) = delete;
  QuietLog& operator=(const QuietLog&) = delete;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_PROCESS_QUIET_LOG_H_
