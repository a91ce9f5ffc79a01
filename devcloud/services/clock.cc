#include "devcloud/services/clock.h"

#include <array>
#include <ctime>

namespace devcloud {

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
