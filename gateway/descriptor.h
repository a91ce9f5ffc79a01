// Owner of a file descriptor.
#ifndef QORN_GATEWAY_DESCRIPTOR_H_
#define QORN_GATEWAY_DESCRIPTOR_H_

#include <unistd.h>

#include <utility>

namespace gateway {

class Descriptor {
 public:
  explicit Descriptor(int fd = -1) : fd_(fd) {}  // -1: none
  Descriptor(Descriptor&& other) noexcept : fd_(other.fd_) { other.fd_ = -1; }
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~Descriptor() {
    if (fd_ >= 0) close(fd_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return fd_; }

 private:
  int fd_;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_DESCRIPTOR_H_
