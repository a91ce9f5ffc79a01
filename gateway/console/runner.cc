#include "gateway/console/runner.h"

#include <cerrno>
#include <cstring>

namespace gateway {

bool RunLines(const RunOptions& options, LineSource* source, Console* console, Printer* printer) {
  const bool named = !options.source_name.empty();
  bool good = true;
  std::string line;
  for (int number = 1;; ++number) {
    Console::Outcome outcome;
    switch (source->Next(&line)) {
      case LineSource::Result::kLine:
        outcome = console->Execute(line);
        break;
      case LineSource::Result::kTooLong:
        outcome = console->Refuse("the line is too long");
        break;
      case LineSource::Result::kFailed:
        printer->Error(options.source_name + ": cannot be read: " + std::strerror(errno));
        return false;
      case LineSource::Result::kStopped:
      case LineSource::Result::kEnd:
        return good;
    }
    // A person at a terminal sees the error and goes on; a script must not run on top of a failure.
    if (!outcome.error.empty()) {
      printer->Error(outcome.error, options.source_name, number);
      if (named) good = false;
      if (named && options.stop_at_failure) return good;
    }
    if (outcome.quit) return good;
  }
}

}  // namespace gateway
