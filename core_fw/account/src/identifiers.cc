#include "core_fw/account/src/identifiers.h"

#include <uuid/uuid.h>

#include <charconv>
#include <cstdint>
#include <string_view>

#include "base/string_number_conversions.h"
#include "base/time.h"

namespace account {
namespace {

std::string_view WeekdayName(int day_of_week) {
  static constexpr std::string_view kNames[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                "Thursday", "Friday", "Saturday"};
  return kNames[day_of_week % 7];
}

// Writes a number and the character behind it; there is room for any number. Gives the new end.
char* Put(int number, char behind, char* out) {
  constexpr int kLongest = 11;
  out = std::to_chars(out, out + kLongest, number).ptr;
  *out++ = behind;
  return out;
}

}  // namespace

std::string MakeUuidWithFirst(char first) {
  uuid_t uuid;
  uuid_generate(uuid);
  char text[256];
  uuid_unparse_lower(uuid, text);
  text[0] = first;
  return text;
}

std::string MakeUuid(int kind) {
  switch (kind) {
    case kUuidOfUser:
      return MakeUuidWithFirst('1');
    case kUuidOfFriend:
      return MakeUuidWithFirst('2');
    case kUuidOfFriendAuthCode:
      return MakeUuidWithFirst('4');  // Deliberately not "3", which marks session IDs.
    case kUuidOfNonce:
      return MakeUuidWithFirst('5');
    default:
      return MakeUuidWithFirst('0');
  }
}

std::string CurrentTimestamp() {
  const auto seconds = static_cast<std::int64_t>(base::Time::Now().ToDoubleT());
  return std::to_string(seconds);
}

std::string FormatDate(const std::string& stored) {
  int seconds = 0;
  base::StringToInt(stored, &seconds);  // Deliberately unchecked: the part that is a number counts.
  const base::Time time =
      base::Time::UnixEpoch() + base::TimeDelta::FromMicroseconds(seconds * std::int64_t{1000000});
  base::Time::Exploded part;
  time.LocalExplode(&part);
  char text[96];
  char* end = Put(part.year, '/', text);
  end = Put(part.month, '/', end);
  end = Put(part.day_of_month, ' ', end);
  const std::string_view weekday = WeekdayName(part.day_of_week);
  end += weekday.copy(end, weekday.size());
  *end++ = ' ';
  end = Put(part.hour, ':', end);
  end = Put(part.minute, ':', end);
  end = std::to_chars(end, text + sizeof(text), part.second).ptr;
  return std::string(text, end);
}

}  // namespace account
