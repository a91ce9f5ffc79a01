// A console's lines from where the program was told to read them.
#ifndef QORN_GATEWAY_CONSOLE_SESSION_H_
#define QORN_GATEWAY_CONSOLE_SESSION_H_

#include <chrono>
#include <optional>
#include <string>

#include "base/scoped_fd.h"
#include "gateway/console/console.h"
#include "gateway/console/runner.h"
#include "gateway/output/printer.h"
#include "gateway/process/signals.h"

namespace gateway {

// Whether a person types the lines: no script, and standard input and output are a terminal.
bool IsTyped(const std::string& script_file);

// The script, or standard input for "". Negative, with errno set, when it cannot be opened.
base::ScopedFd OpenInput(const std::string& script_file);

// How the lines of this script, or of standard input for "", are run.
RunOptions MakeRunOptions(const std::string& script_file, bool keep_going);

// Runs the lines of `input`, or of the terminal when they are typed. False when one failed.
bool RunInput(const RunOptions& options, base::ScopedFd input, const StopSignals& signals,
              Console* console, Printer* printer);

// Returns when the time has passed, the program was told to stop or, when a person types, Enter was
// pressed.
void WaitForEnter(const StopSignals& signals, bool typed, std::optional<std::chrono::seconds> time);

}  // namespace gateway

#endif  // QORN_GATEWAY_CONSOLE_SESSION_H_
