// Runs console lines one after another.
#ifndef QORN_GATEWAY_CONSOLE_RUNNER_H_
#define QORN_GATEWAY_CONSOLE_RUNNER_H_

#include <string>

#include "gateway/console/console.h"
#include "gateway/console/line_source.h"
#include "gateway/output/printer.h"

namespace gateway {

struct RunOptions {
  std::string source_name;  // put with the line's number before an error; "" for a terminal
  bool stop_at_failure = true;
};

// Runs until the input ends, `quit`, a request to stop, or a failure. False when a line of a named
// source failed, even if later lines were run; a request to stop is no failure.
bool RunLines(const RunOptions& options, LineSource* source, Console* console, Printer* printer);

}  // namespace gateway

#endif  // QORN_GATEWAY_CONSOLE_RUNNER_H_
