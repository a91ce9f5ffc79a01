#include "gateway/host/start_spread.h"

#include <charconv>

#include "gateway/host/stable_hash.h"

namespace gateway {

constexpr int kMostSeconds = 86'400;

bool ParseStartSpread(const std::string& text, std::chrono::seconds* spread) {
  int number = 0;
  const char* const end = text.data() + text.size();
  const std::from_chars_result read = std::from_chars(text.data(), end, number);
  if (read.ec != std::errc() || read.ptr != end || number < 0 || number > kMostSeconds) {
    return false;
  }
  *spread = std::chrono::seconds(number);
  return true;
}

std::chrono::seconds StartDelay(std::chrono::seconds spread, const std::string& device_address) {
  const uint64_t choices = static_cast<uint64_t>(spread.count()) + 1;
  return std::chrono::seconds(StableHash(device_address) % choices);
}

}  // namespace gateway
