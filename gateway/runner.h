// Runs console lines one after another.
#ifndef QORN_GATEWAY_RUNNER_H_
#define QORN_GATEWAY_RUNNER_H_

#include <string>

#include "gateway/console.h"
#include "gateway/line_source.h"
#include "gateway/printer.h"

namespace gateway {

// The program's exit statuses.
constexpr int kExitGood = 0;
constexpr int kExitCommandFailed = 1;
constexpr int kExitCannotStart = 2;

struct RunOptions {
  std::string source_name;  // put with the line's number before an error; "" for a terminal
  bool stop_at_failure = true;
};

// Runs until the input ends, `quit`, a request to stop, or a failure. kExitCommandFailed when a
// line of a named source failed, also when it went on after it; a request to stop is kExitGood.
int RunLines(const RunOptions& options, LineSource* source, Console* console, Printer* printer);

}  // namespace gateway

#endif  // QORN_GATEWAY_RUNNER_H_
