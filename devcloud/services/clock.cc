#include "devcloud/services/clock.h"

#include <array>
#include <ctime>

namespace devcloud {

TimePoint Clock::Now() const {
  // Not TimePoint's own clock, which has 32 bits in the C++ library of Debian's armhf.
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  const auto wall = std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
  return TimePoint(std::chrono::duration_cast<TimePoint::duration>(wall)) +
         std::chrono::seconds(offset_seconds_.load());
}

std::string HttpDate(TimePoint time) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm parts{};
  // strftime's names of days and months are English, as HTTP needs them: no locale is ever set.
  gmtime_r(&seconds, &parts);
  std::array<char, 64> text{};
  return {text.data(),
          std::strftime(text.data(), text.size(), "%a, %d %b %Y %H:%M:%S GMT", &parts)};
}

}  // namespace devcloud
