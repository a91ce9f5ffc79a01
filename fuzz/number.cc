// Integers and dates, each against the C library's own reading.
#include <algorithm>
#include <cstring>
#include <ctime>
#include <limits>

#include "base/string_number_conversions.h"
#include "core_fw/account/src/dates.h"
#include "fuzz/fuzz.h"

namespace {

void CheckInteger(const std::string& text) {
  char* end = nullptr;
  const long long wide = std::strtoll(text.c_str(), &end, 10);
  const int expected = static_cast<int>(std::clamp<long long>(wide, std::numeric_limits<int>::min(),
                                                              std::numeric_limits<int>::max()));
  const bool whole = !text.empty() && std::strchr("+-0123456789", text[0]) != nullptr &&
                     end == text.c_str() + text.size() && wide == expected;
  int value = 7;
  fuzz::Require(base::StringToInt(text, &value) == whole, "a whole number, and no other, is good");
  fuzz::Require(value == expected, "the part that is a number counts");
  int again = 0;
  fuzz::Require(base::StringToInt(base::IntToString(value), &again) && again == value,
                "a number reads back");
}

void CheckDate(const std::string& text) {
  int seconds = 0;
  base::StringToInt(text, &seconds);
  tm parts{};
  char weekday[16];
  const std::string date = account::FormatDate(text);
  const int read =
      std::sscanf(date.c_str(), "%d/%d/%d %15s %d:%d:%d", &parts.tm_year, &parts.tm_mon,
                  &parts.tm_mday, weekday, &parts.tm_hour, &parts.tm_min, &parts.tm_sec);
  parts.tm_year -= 1900;
  parts.tm_mon -= 1;
  fuzz::Require(read == 7 && timegm(&parts) == seconds, "a date shows its second");
  char expected[16];
  std::strftime(expected, sizeof(expected), "%A", &parts);
  fuzz::Require(std::strcmp(weekday, expected) == 0, "a date has its day of the week");
}

}  // namespace

void fuzz::Run(const std::string& input) {
  static const int zone = setenv("TZ", "UTC0", 1);
  fuzz::Require(zone == 0, "the time zone can be set");
  CheckInteger(input);
  CheckDate(input);
}
