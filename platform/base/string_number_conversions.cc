#include "base/string_number_conversions.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace base {

namespace {

bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

bool StringToInt(const std::string& text, int* output) {
  const auto start = std::find_if_not(text.begin(), text.end(), IsSpace);
  bool valid = start == text.begin();
  auto position = start;
  const bool negative = position != text.end() && *position == '-';
  if (negative || (position != text.end() && *position == '+')) ++position;

  valid = valid && position != text.end();
  int64_t value = 0;
  for (; position != text.end() && IsDigit(*position); ++position) {
    value = value * 10 + (negative ? '0' - *position : *position - '0');
    if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max()) {
      *output = negative ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
      return false;
    }
  }
  *output = static_cast<int>(value);
  return valid && position == text.end();
}

std::string IntToString(int value) { return std::to_string(value); }

}  // namespace base
