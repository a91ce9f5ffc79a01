// Where console lines come from.
#ifndef QORN_GATEWAY_CONSOLE_LINE_SOURCE_H_
#define QORN_GATEWAY_CONSOLE_LINE_SOURCE_H_

#include <string>

#include "base/scoped_fd.h"
#include "gateway/process/signals.h"

namespace gateway {

// Not thread-safe.
class LineSource {
 public:
  enum class Result { kLine, kTooLong, kEnd, kStopped, kFailed };

  virtual ~LineSource() = default;

  // Waits for a line and returns it without its line break, which the last one may lack. kStopped
  // once the program was told to stop. kTooLong skips a line over 8 MiB. kFailed: errno says why.
  virtual Result Next(std::string* line) = 0;
};

// A script file or a pipe.
class DescriptorLineSource : public LineSource {
 public:
  // Borrows `signals`.
  DescriptorLineSource(base::ScopedFd input, const StopSignals& signals);

  Result Next(std::string* line) override;

 private:
  bool TakeLine(std::string* line);

  static constexpr size_t kMaxLineBytes = size_t{8} << 20;

  const base::ScopedFd input_;
  const StopSignals& signals_;
  std::string buffer_;
  size_t searched_ = 0;  // the buffer has no line break before this position
  bool skipping_ = false;
  bool ended_ = false;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_CONSOLE_LINE_SOURCE_H_
