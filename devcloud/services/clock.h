#ifndef QORN_DEVCLOUD_SERVICES_CLOCK_H_
#define QORN_DEVCLOUD_SERVICES_CLOCK_H_

#include <atomic>
#include <chrono>
#include <string>

namespace devcloud {

using TimePoint = std::chrono::system_clock::time_point;

// The cloud's clock: the wall clock plus an offset, so that tests need not wait for codes to
// expire. Thread-safe.
class Clock {
 public:
  TimePoint Now() const;
  void Advance(std::chrono::seconds step) { offset_seconds_ += step.count(); }
  // Makes it the wall clock again.
  void Reset() { offset_seconds_ = 0; }
  // How far it is ahead of the wall clock.
  std::chrono::seconds ahead() const { return std::chrono::seconds(offset_seconds_.load()); }

 private:
  std::atomic<std::chrono::seconds::rep> offset_seconds_ = 0;
};

// "Tue, 31 Jan 2026 08:00:00 GMT" (RFC 9110 section 5.6.7).
std::string HttpDate(TimePoint time);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_SERVICES_CLOCK_H_
