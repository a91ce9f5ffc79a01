#include "gateway/output/clock_text.h"

#include <array>
#include <chrono>
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
  const auto now =
      std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
  const auto count = now.time_since_epoch().count();
  const std::time_t seconds = count / 1000;
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  std::array<char, 8> fraction{};
  std::snprintf(fraction.data(), fraction.size(), ".%03dZ", static_cast<int>(count % 1000));
  return Format("%Y-%m-%dT%H:%M:%S", parts) + fraction.data();
}

std::string UtcText(std::time_t time) {
  std::tm parts{};
  gmtime_r(&time, &parts);
  return Format("%Y-%m-%dT%H:%M:%SZ", parts);
}

}  // namespace gateway
