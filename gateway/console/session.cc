#include "gateway/console/session.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <utility>

#include "gateway/console/line_source.h"
#include "gateway/console/terminal.h"

namespace gateway {

bool IsTyped(const std::string& script_file) {
  return script_file.empty() && isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
}

base::ScopedFd OpenInput(const std::string& script_file) {
  if (script_file.empty()) return base::ScopedFd(dup(STDIN_FILENO));
  return base::ScopedFd(open(script_file.c_str(), O_RDONLY | O_CLOEXEC));
}

RunOptions MakeRunOptions(const std::string& script_file, bool keep_going) {
  RunOptions run;
  run.stop_at_failure = !keep_going;
  if (!script_file.empty()) {
    run.source_name = script_file;
  } else if (!IsTyped(script_file)) {
    run.source_name = "standard input";
  }
  return run;
}

bool RunInput(const RunOptions& options, base::ScopedFd input, const StopSignals& signals,
              Console* console, Printer* printer) {
  std::unique_ptr<LineSource> source;
  if (options.source_name.empty()) {
    TypingHelp help;
    help.complete = [console](const std::string& line) { return console->Complete(line); };
    help.may_be_kept = [console](const std::string& line) { return console->MayBeKept(line); };
    source = std::make_unique<TerminalLineSource>(signals, printer, std::move(help),
                                                  HistoryFile(HistoryFile::DefaultPath()));
  } else {
    source = std::make_unique<DescriptorLineSource>(std::move(input), signals);
  }
  return RunLines(options, source.get(), console, printer);
}

void WaitForEnter(const StopSignals& signals, bool typed,
                  std::optional<std::chrono::seconds> time) {
  const auto end = std::chrono::steady_clock::now() + time.value_or(std::chrono::hours(24 * 365));
  for (bool pressed = false; !pressed;) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    if (left.count() <= 0) break;
    pollfd fds[] = {{signals.stop_fd(), POLLIN, 0}, {typed ? STDIN_FILENO : -1, POLLIN, 0}};
    const auto pause = std::min<std::chrono::milliseconds>(left, std::chrono::hours(1));
    if (poll(fds, 2, static_cast<int>(pause.count())) <= 0) continue;
    char line[4096];
    pressed = fds[0].revents != 0 || read(STDIN_FILENO, line, sizeof(line)) >= 0 || errno != EINTR;
  }
}

}  // namespace gateway
