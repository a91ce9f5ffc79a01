#ifndef QORN_PLATFORM_BASE_SCOPED_FD_H_
#define QORN_PLATFORM_BASE_SCOPED_FD_H_

#include <unistd.h>

#include <utility>

namespace base {

// Owns a file descriptor, or none (-1), and closes it.
class ScopedFd {
 public:
  explicit ScopedFd(int fd = -1) : fd_(fd) {}
  ScopedFd(ScopedFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  ScopedFd& operator=(ScopedFd&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~ScopedFd() {
    if (fd_ >= 0) close(fd_);
  }

  int get() const { return fd_; }
  bool is_valid() const { return fd_ >= 0; }

 private:
  int fd_;
};

}  // namespace base

#endif  // QORN_PLATFORM_BASE_SCOPED_FD_H_
