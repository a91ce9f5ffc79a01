#include <gtest/gtest.h>
#include <stdlib.h>

#include <climits>
#include <sstream>

#include "base/file_path.h"
#include "base/path_service.h"
#include "base/string_number_conversions.h"
#include "base/time.h"

namespace {

using base::Time;
using base::TimeDelta;
using std::string_literals::operator""s;

void ExpectRead(const std::string& text, int expected, bool valid) {
  int value = 77;
  EXPECT_EQ(base::StringToInt(text, &value), valid) << text;
  EXPECT_EQ(value, expected) << text;
}

TEST(StringToInt, LeavesWhatItHadReadInTheOutput) {
  // Each text is followed by its value.
  std::istringstream valid(
      "0 0 +5 5 -5 -5 -0 0 007 7 2147483647 2147483647 -2147483648 -2147483648");
  std::istringstream invalid(
      "+ 0 - 0 +-5 0 abc 0 12abc 12 2013/11/11 2013 0x10 0 2147483648 2147483647 "
      "-2147483649 -2147483648 99999999999999999999x 2147483647 -99999999999999999999 -2147483648");
  std::string text;
  int value = 0;
  while (valid >> text >> value) ExpectRead(text, value, true);
  while (invalid >> text >> value) ExpectRead(text, value, false);
  for (const char* empty : {"", " ", "\t\n\v\f\r "}) ExpectRead(empty, 0, false);
  for (const std::string& padded : {" -7"s, "\t\n\v\f\r -7"s, "-7 "s, "-7\0"s})
    ExpectRead(padded, -7, false);
  for (const int number : {0, -1, INT_MAX, INT_MIN}) {
    ExpectRead(base::IntToString(number), number, true);
  }
}

TEST(Time, ExplodesInTheZoneOfTheMoment) {
  const struct {
    int64_t microseconds;
    const char* zone;
    const char* local;
  } kCases[] = {{1384156800'123'999, "EAST-9", "2013 11 1 11 17 0 0 123 "},
                {1384156800'000'000, "WEST8", "2013 11 1 11 0 0 0 0 "},
                {-1, "UTC0", "1969 12 3 31 23 59 59 999 "},
                {4102444799'000'000, "UTC0", "2099 12 4 31 23 59 59 0 "}};
  for (const auto& c : kCases) {
    setenv("TZ", c.zone, 1);
    Time::Exploded t{};
    (Time::UnixEpoch() + TimeDelta::FromMicroseconds(c.microseconds)).LocalExplode(&t);
    std::string text;
    for (const int part : {t.year, t.month, t.day_of_week, t.day_of_month, t.hour, t.minute,
                           t.second, t.millisecond}) {
      text += std::to_string(part) + " ";
    }
    EXPECT_EQ(text, c.local) << c.zone;
  }
  unsetenv("TZ");
}

TEST(Time, StopsAtTheEndsOfItsRange) {
  const TimeDelta most = TimeDelta::FromMicroseconds(INT64_MAX);
  EXPECT_EQ(TimeDelta::FromSeconds(INT64_MAX), most);
  EXPECT_EQ(most + most, most);
  EXPECT_EQ((TimeDelta::FromMicroseconds(-2) - most).InMicroseconds(), INT64_MIN);
  EXPECT_EQ((Time::UnixEpoch() + TimeDelta::FromMilliseconds(-1500)).ToDoubleT(), -1.5);
}

TEST(FilePath, AppendsOneSeparator) {
  const char* const kCases[][3] = {
      {"a", "b", "a/b"}, {"a//", "b", "a/b"}, {"/", "b", "/b"}, {"", "b", "b"}, {"a", "", "a"}};
  for (const auto& [path, component, expected] : kCases) {
    EXPECT_EQ(FilePath::FromUTF8Unsafe(path).Append(component).value(), expected);
  }
}

TEST(PathService, KnowsThreeDirectories) {
  const char* const kEnds[] = {"untouched", "", "/bin", "/lib", "untouched"};
  for (const int key : {0, 1, 2, 3, 4}) {
    FilePath path("untouched");
    EXPECT_EQ(PathService::Get(key, &path), key >= 1 && key <= 3) << key;
    EXPECT_TRUE(path.value().ends_with(kEnds[key])) << path.value();
  }
}

}  // namespace
