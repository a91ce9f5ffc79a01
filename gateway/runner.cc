#include "gateway/runner.h"

#include <cerrno>
#include <cstring>

namespace gateway {

int RunLines(const RunOptions& options, LineSource* source, Console* console, Printer* printer) {
  const bool named = !options.source_name.empty();
  int status = kExitGood;
  std::string line;
  for (int number = 1;; ++number) {
    Console::Outcome outcome;
    switch (source->Next(&line)) {
      case LineSource::Result::kLine:
        outcome = console->Execute(line);
        break;
      case LineSource::Result::kTooLong:
        outcome.error = "the line is too long";
        break;
      case LineSource::Result::kFailed:
        printer->Error(options.source_name + ": cannot be read: " + std::strerror(errno));
        return kExitCommandFailed;
      case LineSource::Result::kStopped:
      case LineSource::Result::kEnd:
        return status;
    }
    if (!outcome.error.empty()) {
      printer->Error(outcome.error, options.source_name, number);
      if (named) status = kExitCommandFailed;
      if (named && options.stop_at_failure) return status;
    }
    if (outcome.quit) return status;
  }
}

}  // namespace gateway
