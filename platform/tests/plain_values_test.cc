#include <gtest/gtest.h>
#include <stdlib.h>

#include <climits>

#include "base/file_path.h"
#include "base/path_service.h"
#include "base/string_number_conversions.h"
#include "base/time.h"

namespace {

using base::Time;
using base::TimeDelta;

TEST(StringToInt, LeavesWhatItHadReadInTheOutput) {
  const struct {
    const char* text;
    int value;
    bool valid;
  } kCases[] = {
      {"0", 0, true},
      {"+5", 5, true},
      {"-5", -5, true},
      {"007", 7, true},
      {"2147483647", INT_MAX, true},
      {"-2147483648", INT_MIN, true},
      {"2147483648", INT_MAX, false},
      {"-2147483649", INT_MIN, false},
      {"99999999999999999999x", INT_MAX, false},
      {"", 0, false},
      {"+", 0, false},
      {"-", 0, false},
      {"+-5", 0, false},
      {" 5", 5, false},
      {"\t\n\v\f\r -7", -7, false},
      {"5 ", 5, false},
      {"12abc", 12, false},
      {"abc", 0, false},
      {"0x10", 0, false},
      {"2013/11/11 Monday", 2013, false},
  };
  for (const auto& c : kCases) {
    int value = 77;
    EXPECT_EQ(base::StringToInt(c.text, &value), c.valid) << c.text;
    EXPECT_EQ(value, c.value) << c.text;
  }
  int value = 0;
  EXPECT_FALSE(base::StringToInt(std::string("1\0", 2), &value));
  for (const int number : {0, -1, INT_MAX, INT_MIN}) {
    EXPECT_TRUE(base::StringToInt(base::IntToString(number), &value));
    EXPECT_EQ(value, number);
  }
}

std::string Show(const Time::Exploded& t) {
  std::string text;
  for (const int part : {t.year, t.month, t.day_of_week, t.day_of_month, t.hour, t.minute, t.second,
                         t.millisecond}) {
    text += std::to_string(part) + " ";
  }
  return text;
}

TEST(Time, ExplodesInUtcAndInTheZoneOfTheMoment) {
  const struct {
    int64_t microseconds;
    const char* zone;
    const char* local;
  } kCases[] = {
      {0, "UTC0", "1970 1 4 1 0 0 0 0 "},
      {1384156800'000'000, "UTC0", "2013 11 1 11 8 0 0 0 "},
      {1384156800'123'999, "EAST-9", "2013 11 1 11 17 0 0 123 "},
      {1384156800'000'000, "WEST8", "2013 11 1 11 0 0 0 0 "},
      {-1, "UTC0", "1969 12 3 31 23 59 59 999 "},
      {4102444799'000'000, "UTC0", "2099 12 4 31 23 59 59 0 "},
  };
  for (const auto& c : kCases) {
    setenv("TZ", c.zone, 1);
    const Time time = Time::UnixEpoch() + TimeDelta::FromMicroseconds(c.microseconds);
    Time::Exploded local{};
    time.LocalExplode(&local);
    EXPECT_EQ(Show(local), c.local) << c.zone;
    EXPECT_EQ((time - Time::UnixEpoch()).InMicroseconds(), c.microseconds);
  }
  Time::Exploded utc{};
  (Time::UnixEpoch() + TimeDelta::FromSeconds(1384156800)).UTCExplode(&utc);
  EXPECT_EQ(Show(utc), "2013 11 1 11 8 0 0 0 ");
  unsetenv("TZ");
}

TEST(Time, StopsAtTheEndsOfItsRange) {
  EXPECT_EQ(TimeDelta::FromSeconds(INT64_MAX).InMicroseconds(), INT64_MAX);
  EXPECT_EQ(TimeDelta::FromMilliseconds(INT64_MIN).InMicroseconds(), INT64_MIN);
  EXPECT_EQ(TimeDelta::FromMilliseconds(-3).InMicroseconds(), -3000);
  const TimeDelta most = TimeDelta::FromMicroseconds(INT64_MAX);
  EXPECT_EQ(most + most, most);
  EXPECT_EQ(TimeDelta::FromMicroseconds(-2) - most, TimeDelta::FromMicroseconds(INT64_MIN));
  EXPECT_DOUBLE_EQ((Time::UnixEpoch() + TimeDelta::FromMilliseconds(-1500)).ToDoubleT(), -1.5);
}

TEST(FilePath, AppendsOneSeparator) {
  const struct {
    const char* path;
    const char* component;
    const char* expected;
  } kCases[] = {
      {"a", "b", "a/b"}, {"a/", "b", "a/b"}, {"a//", "b", "a/b"},          {"/", "b", "/b"},
      {"", "b", "b"},    {"a", "", "a"},     {"/a/ä", "b.db", "/a/ä/b.db"}};
  for (const auto& c : kCases) {
    EXPECT_EQ(FilePath::FromUTF8Unsafe(c.path).Append(c.component).value(), c.expected);
  }
}

TEST(PathService, KnowsThreeDirectories) {
  const auto get = [](int key) {
    FilePath path("untouched");
    const bool known = PathService::Get(key, &path);
    EXPECT_EQ(known, path.value() != "untouched") << key;
    return path.value();
  };
  char* current = realpath(".", nullptr);
  EXPECT_EQ(get(1), current);
  free(current);
  EXPECT_EQ(get(2).substr(get(2).rfind('/')), "/bin");
  EXPECT_EQ(get(3).substr(get(3).rfind('/')), "/lib");
  EXPECT_EQ(get(0), "untouched");
  EXPECT_EQ(get(4), "untouched");
}

}  // namespace
