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

// The lowest severity that is logged, 0 at start-up. The caller must check it: LogMessage writes
// every line that it is given.
int GetMinLogLevel();
// Accepts any number; one above LOG_FATAL silences the log.
void SetMinLogLevel(int level);

// Called with a whole line, including its line break; the text begins at `message_start`. If it
// returns true, the line is not written anywhere else.
using LogMessageHandler = std::function<bool(int severity, const char* file, int line,
                                             size_t message_start, const std::string& text)>;

// Installs a handler; an empty one removes the current one. The handler is called on the thread
// that logs, with no lock held, so it may call anything; it must not throw. When this function
// returns, no other thread is running the previous handler and that handler is destroyed, so its
// library may be unmapped. The caller must therefore hold nothing that the previous handler waits
// for. A handler that replaces itself is destroyed when its call ends.
void SetLogMessageHandler(LogMessageHandler handler);

// Appends all further lines to the file `path`, or writes them to stderr again if it is "". The
// same path again reopens the file, as after a rotation. A line that cannot be written to the file
// (a full disk) goes to stderr, after a first one that says why. False if the file cannot be
// opened: lines then go where they went before.
bool SetLogFile(const std::string& path);

// One line: built through `stream`, written by the destructor. Not thread-safe.
class LogMessage {
 public:
  // `file` is borrowed until the object is destroyed.
  LogMessage(const char* file, int line, int severity);
  // Writes the text verbatim and one line break. If an allocation fails, the line is lost.
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
