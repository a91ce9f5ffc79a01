#include "gateway/console/line_source.h"

#include <poll.h>

#include <cerrno>
#include <utility>

namespace gateway {

DescriptorLineSource::DescriptorLineSource(base::ScopedFd input, const StopSignals& signals)
    : input_(std::move(input)), signals_(signals) {}

LineSource::Result DescriptorLineSource::Next(std::string* line) {
  for (;;) {
    if (signals_.WaitForStop(std::chrono::milliseconds(0))) return Result::kStopped;
    if (TakeLine(line)) {
      return std::exchange(skipping_, false) ? Result::kTooLong : Result::kLine;
    }
    if (ended_) return Result::kEnd;
    if (buffer_.size() > kMaxLineBytes) {
      // Forget what came of the line, so that input without line breaks takes no more memory.
      buffer_.clear();
      searched_ = 0;
      skipping_ = true;
    }
    // A signal must be noticed while a pipe stays open and empty.
    pollfd fds[] = {{input_.get(), POLLIN, 0}, {signals_.stop_fd(), POLLIN, 0}};
    if (poll(fds, 2, -1) < 0 || fds[1].revents != 0) continue;
    char bytes[65536];
    const ssize_t count = read(input_.get(), bytes, sizeof(bytes));
    if (count < 0 && errno != EINTR && errno != EAGAIN) return Result::kFailed;
    if (count == 0) ended_ = true;
    if (count > 0) buffer_.append(bytes, static_cast<size_t>(count));
  }
}

bool DescriptorLineSource::TakeLine(std::string* line) {
  size_t end = buffer_.find('\n', searched_);
  if (end == std::string::npos) {
    searched_ = buffer_.size();
    if (!ended_ || (buffer_.empty() && !skipping_)) return false;
    end = buffer_.size();
  }
  line->assign(buffer_, 0, end);
  buffer_.erase(0, end + 1);
  searched_ = 0;
  // Scripts may come from an editor that ends lines with CR LF.
  if (!line->empty() && line->back() == '\r') line->pop_back();
  return true;
}

}  // namespace gateway
