#include "gateway/output/clock_text.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace gateway {
namespace {

std::string Format(const char* format, const std::tm& parts) {
  std::array<char, 64> text{};
  return std::string(text.data(), std::strftime(text.data(), text.size(), format, &parts));
}

}  // namespace

std::string LocalTime() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  localtime_r(&now, &parts);
  return Format("%Y-%m-%d %H:%M:%S", parts);
}

std::string UtcTime() {
  // Not std::chrono's system clock, which has 32 bits in the C++ library of Debian's armhf.
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  std::tm parts{};
  gmtime_r(&now.tv_sec, &parts);
  std::array<char, 8> fraction{};
  std::snprintf(fraction.data(), fraction.size(), ".%03dZ",
                static_cast<int>(now.tv_nsec / 1000000));
  return Format("%Y-%m-%dT%H:%M:%S", parts) + fraction.data();
}

std::string UtcText(std::time_t time) {
  std::tm parts{};
  gmtime_r(&time, &parts);
  return Format("%Y-%m-%dT%H:%M:%SZ", parts);
}

}  // namespace gateway
