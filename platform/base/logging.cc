#include "base/logging.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <locale>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/condition_variable.h"
#include "base/lock.h"
#include "base/scoped_fd.h"
#include "base/thread_annotations.h"
#include "base/time.h"

namespace logging {

namespace {

constexpr const char* kSeverityNames[] = {"VERBOSE", "DETAILED_INFO", "INTERNAL_INFO", "INFO",
                                          "WARNING", "ERROR",         "ERROR_REPORT",  "FATAL"};

std::atomic<int> g_min_log_level{LOG_INTERNAL_DETAILED_INFO};

struct Sink {
  base::Lock lock;
  base::ConditionVariable call_ended;
  std::shared_ptr<const LogMessageHandler> handler GUARDED_BY(lock);
  base::ScopedFd file GUARDED_BY(lock);  // Without one, lines go to stderr.
  bool failing GUARDED_BY(lock) = false;
};

Sink& GetSink() {
  // Never destroyed: threads may log until the process ends.
  static Sink* const sink = new Sink;
  return *sink;
}

const char* SeverityName(int severity) {
  const int known = std::clamp<int>(severity, LOG_VERBOSE, LOG_FATAL);
  return kSeverityNames[known - LOG_VERBOSE];
}

char* PutTwoDigits(int number, char* out) {
  *out++ = static_cast<char>('0' + number / 10);
  *out++ = static_cast<char>('0' + number % 10);
  return out;
}

// The digits are written by hand: std::put_time takes longer than the rest of a line.
void WritePrefix(const char* file, int line, int severity, std::ostream& out) {
  base::Time::Exploded now{};
  base::Time::Now().LocalExplode(&now);
  char time[16];
  char* end = time;
  *end++ = '[';
  for (const int part : {now.month, now.day_of_month}) end = PutTwoDigits(part, end);
  *end++ = '/';
  for (const int part : {now.hour, now.minute, now.second}) end = PutTwoDigits(part, end);
  out.write(time, end - time);
  out << ':' << SeverityName(severity) << ':' << file << '(' << line << ")] ";
}

// Writes a line with a single call if the system accepts it, so that lines of several processes do
// not mix. False, with errno set, if it was not written completely.
bool WriteLine(int fd, std::string_view line) {
  while (!line.empty()) {
    const ssize_t written = write(fd, line.data(), line.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    line.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

// A full disk under the log must not silence it.
void WriteToFileOrStderr(Sink& sink, const std::string& line) EXCLUSIVE_LOCKS_REQUIRED(sink.lock) {
  const bool written = WriteLine(sink.file.get(), line);
  if (!written) {
    const std::string reason = std::generic_category().message(errno);
    if (!sink.failing) {
      WriteLine(STDERR_FILENO, "The log file cannot be written (" + reason +
                                   "); until it can, its lines are these:\n");
    }
    WriteLine(STDERR_FILENO, line);
  }
  sink.failing = !written;
}

// One call of the handler. Calls nest on a thread, because a handler may log.
class HandlerCall {
 public:
  HandlerCall();
  ~HandlerCall();
  HandlerCall(const HandlerCall&) = delete;
  HandlerCall& operator=(const HandlerCall&) = delete;

  const LogMessageHandler* handler() const { return handler_.get(); }
  // How many calls of `handler` are in progress on this thread.
  static long CountOnThisThread(const LogMessageHandler* handler);

 private:
  static thread_local HandlerCall* innermost_;

  HandlerCall* const outer_ = std::exchange(innermost_, this);
  std::shared_ptr<const LogMessageHandler> handler_;
};

thread_local HandlerCall* HandlerCall::innermost_ = nullptr;

HandlerCall::HandlerCall() {
  Sink& sink = GetSink();
  base::AutoLock hold(sink.lock);
  handler_ = sink.handler;
}

HandlerCall::~HandlerCall() {
  innermost_ = outer_;
  Sink& sink = GetSink();
  base::AutoLock hold(sink.lock);
  // If this is the last reference, the handler replaced itself. It is then destroyed with this
  // object, after the lock is released, because its destruction may log.
  if (handler_.use_count() <= 1) return;
  handler_.reset();
  sink.call_ended.NotifyAll();
}

long HandlerCall::CountOnThisThread(const LogMessageHandler* handler) {
  long count = 0;
  for (const HandlerCall* call = innermost_; call != nullptr; call = call->outer_) {
    if (call->handler() == handler) ++count;
  }
  return count;
}

}  // namespace

int GetMinLogLevel() { return g_min_log_level; }

void SetMinLogLevel(int level) { g_min_log_level = level; }

void SetLogMessageHandler(LogMessageHandler handler) {
  auto shared = handler ? std::make_shared<const LogMessageHandler>(std::move(handler)) : nullptr;
  Sink& sink = GetSink();
  base::AutoLock hold(sink.lock);
  // The previous handler is destroyed after the lock is released, because its destruction may log.
  sink.handler.swap(shared);
  const long own_references = 1 + HandlerCall::CountOnThisThread(shared.get());
  while (shared.use_count() > own_references) sink.call_ended.Wait(sink.lock);
}

bool SetLogFile(const std::string& path) {
  base::ScopedFd file;
  if (!path.empty()) {
    constexpr mode_t kReadableByGroup = 0640;
    // O_NONBLOCK: a pipe without a reader is refused; opening it would block.
    constexpr int kFlags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK;
    file = base::ScopedFd(open(path.c_str(), kFlags, kReadableByGroup));
    if (!file.is_valid()) return false;
    fcntl(file.get(), F_SETFL, O_APPEND);
  }
  Sink& sink = GetSink();
  base::AutoLock hold(sink.lock);
  sink.file = std::move(file);
  return true;
}

LogMessage::LogMessage(const char* file, int line, int severity)
    : file_(file), line_(line), severity_(severity) {
  // Numbers look the same whatever locale the program has chosen.
  stream_.imbue(std::locale::classic());
  WritePrefix(file, line, severity, stream_);
  message_start_ = stream_.view().size();
}

LogMessage::~LogMessage() {
  try {
    Write();
  } catch (...) {
    // Out of memory, which a destructor cannot report.
  }
}

void LogMessage::Write() {
  // If an allocation failed, the stream accepts nothing more. Cleared, so that the line at least
  // ends where it broke off.
  stream_.clear();
  stream_ << '\n';
  const std::string text = stream_.str();
  if (const HandlerCall call; call.handler() != nullptr &&
                              (*call.handler())(severity_, file_, line_, message_start_, text)) {
    return;
  }
  Sink& sink = GetSink();
  base::AutoLock hold(sink.lock);
  if (sink.file.is_valid()) {
    WriteToFileOrStderr(sink, text);
  } else {
    WriteLine(STDERR_FILENO, text);
  }
}

}  // namespace logging
