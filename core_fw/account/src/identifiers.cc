#include "core_fw/account/src/identifiers.h"

#include <uuid/uuid.h>

#include <cstdint>
#include <cstdio>

#include "base/string_number_conversions.h"
#include "base/time.h"

namespace account {
namespace {

const char* WeekdayName(int day_of_week) {
  static constexpr const char* kNames[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                           "Thursday", "Friday", "Saturday"};
  return kNames[day_of_week % 7];
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
  char text[20];
  std::snprintf(text, sizeof(text), "%lld", static_cast<long long>(seconds));
  return text;
}

std::string FormatDate(const std::string& stored) {
  int seconds = 0;
  base::StringToInt(stored, &seconds);  // Deliberately unchecked: the part that is a number counts.
  const base::Time time =
      base::Time::UnixEpoch() + base::TimeDelta::FromMicroseconds(seconds * std::int64_t{1000000});
  base::Time::Exploded part;
  time.LocalExplode(&part);
  char text[96];
  std::snprintf(text, sizeof(text), "%d/%d/%d %s %d:%d:%d", part.year, part.month,
                part.day_of_month, WeekdayName(part.day_of_week), part.hour, part.minute,
                part.second);
  return text;
}

}  // namespace account
