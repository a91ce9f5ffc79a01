// The log. A line reads "[mmdd/hhmmss:SEVERITY:file(line)] text", in local time, and goes to
// stderr, to a file or to a handler. Any thread; lines of different threads never mix.
#ifndef QORN_PLATFORM_BASE_LOGGING_H_
#define QORN_PLATFORM_BASE_LOGGING_H_

#include <cstddef>
#include <functional>
#include <sstream>
#include <string>

namespace logging {

// Part of the binary contract: components pass the plain numbers. Never renumber.
enum LogSeverity {
  LOG_VERBOSE = -1,
  LOG_INTERNAL_DETAILED_INFO = 0,
  LOG_INTERNAL_INFO = 1,
  LOG_INFO = 2,
  LOG_WARNING = 3,
  LOG_ERROR = 4,
  LOG_ERROR_REPORT = 5,
  LOG_FATAL = 6,  // Does not end the process.
};

// The least severity that is worth a line, 0 at first. Whoever logs asks first: LogMessage writes
// what it is given.
int GetMinLogLevel();
// Takes any number; one above LOG_FATAL silences all.
void SetMinLogLevel(int level);

// Gets a whole line, its line break included; the text begins at `message_start`. True keeps the
// line from being written elsewhere.
using LogMessageHandler = std::function<bool(int severity, const char* file, int line,
                                             size_t message_start, const std::string& text)>;

// Puts a handler in place; an empty one takes it away. The handler is called with no lock held, on
// the thread that logs, so it may call anything; it must not throw. Once this returns, no other
// thread runs the handler before, and it is destroyed: its library may be unmapped. So the caller
// holds nothing that the handler waits for. A handler that replaces itself is destroyed when its
// call ends.
void SetLogMessageHandler(LogMessageHandler handler);

// Appends lines to the file `path` from now on, or writes them to stderr again for "". The same
// path once more opens the file anew, as after a rotation. A line that the file does not take (a
// full disk) goes to stderr, after a first one that says why. False when the file cannot be opened:
// lines go on to where they went before.
bool SetLogFile(const std::string& path);

// One line: built through `stream`, written when the object is destroyed. Used by one thread.
class LogMessage {
 public:
  // `file` is borrowed until the object is destroyed.
  LogMessage(const char* file, int line, int severity);
  // Writes the text as it is and one line break. A line for which there is no memory is lost.
  ~LogMessage();
  LogMessage(const LogMessage&) = delete;
  LogMessage& operator=(const LogMessage&) = delete;

  // What the line's text is written to.
  std::ostream& stream() { return stream_; }

 private:
  void Write();

  const char* const file_;
  const int line_;
  const int severity_;
  size_t message_start_ = 0;
  std::ostringstream stream_;
};

}  // namespace logging

#endif  // QORN_PLATFORM_BASE_LOGGING_H_
