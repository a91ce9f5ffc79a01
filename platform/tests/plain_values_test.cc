#include <gtest/gtest.h>
#include <stdlib.h>

#include <climits>
#include <tuple>

#include "base/pickle.h"
#include "base/time.h"

namespace {

using base::Time;
using base::TimeDelta;
using std::string_literals::operator""s;

TEST(Pickle, WritesASizeAndPaddedFields) {
  Pickle pickle;
  EXPECT_EQ(std::string(pickle.data(), pickle.size()), "\0\0\0\0"s);
  EXPECT_TRUE(pickle.WriteString("abcde") && pickle.WriteInt(-2));
  EXPECT_TRUE(pickle.WriteString("") && pickle.WriteString("a\0cd"s));
  EXPECT_EQ(std::string(pickle.data(), pickle.size()),
            "\x1c\0\0\0\x05\0\0\0"s + "abcde\0\0\0\xfe\xff\xff\xff\0\0\0\0\x04\0\0\0"s + "a\0cd"s);

  Pickle borrowed(pickle.data(), pickle.size());
  EXPECT_EQ(borrowed.data(), pickle.data());
  EXPECT_FALSE(borrowed.WriteInt(1) || borrowed.WriteString(""));
  Pickle copy(borrowed);
  EXPECT_NE(copy.data(), pickle.data());
  EXPECT_TRUE(copy.WriteInt(1));
  PickleIterator reader(copy);
  std::string texts[3];
  int numbers[2];
  EXPECT_TRUE(reader.ReadString(&texts[0]) && reader.ReadInt(&numbers[0]));
  EXPECT_TRUE(reader.ReadString(&texts[1]) && reader.ReadString(&texts[2]));
  EXPECT_TRUE(reader.ReadInt(&numbers[1]) && !reader.ReadInt(&numbers[1]));
  EXPECT_TRUE(texts[0] == "abcde" && texts[1].empty() && texts[2] == "a\0cd"s);
  EXPECT_TRUE(numbers[0] == -2 && numbers[1] == 1);
}

// The fuzz target's seeds have what is cut short.
TEST(PickleIterator, ReadsAFieldWithoutItsPaddingAndNothingBehindTheBytes) {
  for (const auto& [bytes, reads] :
       {std::pair{"\x05\0\0\0\x01\0\0\0a"s, true}, std::pair{"\x09\0\0\0\x01\0\0\0abcd"s, false}}) {
    PickleIterator reader(Pickle(bytes.data(), bytes.size()));
    std::string text;
    EXPECT_EQ(reader.ReadString(&text), reads) << testing::PrintToString(bytes);
  }
}

TEST(Time, ExplodesInTheZoneOfTheMoment) {
  const std::tuple<int64_t, const char*, const char*> kCases[] = {
      {1384156800'123'999, "EAST-9", "2013 11 1 11 17 0 0 123 "},
      {1384156800'000'000, "WEST8", "2013 11 1 11 0 0 0 0 "},
      {-1, "UTC0", "1969 12 3 31 23 59 59 999 "},
      {4102444799'000'000, "UTC0", "2099 12 4 31 23 59 59 0 "}};
  for (const auto& [microseconds, zone, local] : kCases) {
    setenv("TZ", zone, 1);
    Time::Exploded t{};
    (Time::UnixEpoch() + TimeDelta::FromMicroseconds(microseconds)).LocalExplode(&t);
    std::string text;
    for (const int part : {t.year, t.month, t.day_of_week, t.day_of_month, t.hour, t.minute,
                           t.second, t.millisecond}) {
      text += std::to_string(part) + " ";
    }
    EXPECT_EQ(text, local) << zone;
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

}  // namespace
