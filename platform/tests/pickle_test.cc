#include "base/pickle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

namespace {

using std::string_literals::operator""s;

TEST(Pickle, WritesASizeAndPaddedFields) {
  static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the bytes below are little-endian");
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
  std::string text;
  int number = 0;
  EXPECT_TRUE(reader.ReadString(&text) && text == "abcde");
  EXPECT_TRUE(reader.ReadInt(&number) && number == -2);
  EXPECT_TRUE(reader.ReadString(&text) && text.empty());
  EXPECT_TRUE(reader.ReadString(&text) && text == "a\0cd"s);
  EXPECT_TRUE(reader.ReadInt(&number) && number == 1);
  EXPECT_FALSE(reader.ReadInt(&number));
}

// Each case is copied into memory of its own size, so that the address sanitizer sees a byte too
// many.
TEST(PickleIterator, RefusesWhatDoesNotFit) {
  const struct {
    const char* name;
    std::string bytes;
    bool first_read_works;
  } kCases[] = {{"nothing", ""s, false},
                {"half a size", "\x08\0"s, false},
                {"size beyond the end", "\x09\0\0\0\x01\0\0\0abcd"s, false},
                {"bytes behind the payload", "\0\0\0\0\x01\0\0\0a"s, false},
                {"half a length", "\x02\0\0\0\x01\0"s, false},
                {"length beyond the end", "\x08\0\0\0\x05\0\0\0abcd"s, false},
                {"length at the largest int", "\x08\0\0\0\xff\xff\xff\x7f"s + "abcd"s, false},
                {"negative length", "\x08\0\0\0\xff\xff\xff\xff"s + "abcd"s, false},
                {"padding missing", "\x05\0\0\0\x01\0\0\0a"s, true}};
  for (const auto& c : kCases) {
    const auto exact = std::make_unique<char[]>(c.bytes.size());
    std::copy(c.bytes.begin(), c.bytes.end(), exact.get());
    PickleIterator reader(Pickle(exact.get(), c.bytes.size()));
    std::string text = "untouched";
    int number = 7;
    EXPECT_EQ(reader.ReadString(&text), c.first_read_works) << c.name;
    EXPECT_EQ(text, c.first_read_works ? "a" : "untouched") << c.name;
    EXPECT_TRUE(!reader.ReadInt(&number) && number == 7) << c.name;
  }
}

}  // namespace
