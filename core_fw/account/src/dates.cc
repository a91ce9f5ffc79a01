#include "core_fw/account/src/dates.h"

#include <charconv>
#include <cstdint>
#include <string_view>

#include "base/string_number_conversions.h"
#include "base/time.h"

namespace account {
namespace {

// English names whatever the locale: other programs parse these dates.
std::string_view WeekdayName(int day_of_week) {
  static constexpr std::string_view kNames[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                "Thursday", "Friday", "Saturday"};
  return kNames[day_of_week % 7];
}

// Writes a number and then `separator`, and returns the new end. The buffer has room for any int.
char* Append(int number, char separator, char* out) {
  constexpr int kLongest = 11;
  out = std::to_chars(out, out + kLongest, number).ptr;
  *out++ = separator;
  return out;
}

}  // namespace

std::string CurrentTimestamp() {
  const auto seconds = static_cast<std::int64_t>(base::Time::Now().ToDoubleT());
  return std::to_string(seconds);
}

std::string FormatDate(const std::string& stored) {
  // Deliberately 32 bits and unchecked: a later date than 2038 reads as the last second that fits.
  int seconds = 0;
  base::StringToInt(stored, &seconds);
  const base::Time time =
      base::Time::UnixEpoch() + base::TimeDelta::FromMicroseconds(seconds * std::int64_t{1000000});
  base::Time::Exploded part;
  time.LocalExplode(&part);
  // By hand into one buffer: a user's information holds three dates, and a stream would allocate.
  char text[96];
  char* end = Append(part.year, '/', text);
  end = Append(part.month, '/', end);
  end = Append(part.day_of_month, ' ', end);
  const std::string_view weekday = WeekdayName(part.day_of_week);
  end += weekday.copy(end, weekday.size());
  *end++ = ' ';
  end = Append(part.hour, ':', end);
  end = Append(part.minute, ':', end);
  end = std::to_chars(end, text + sizeof(text), part.second).ptr;
  return std::string(text, end);
}

}  // namespace account
