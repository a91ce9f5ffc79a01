#include "base/pickle.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using std::string_literals::operator""s;

std::string Bytes(const Pickle& pickle) { return std::string(pickle.data(), pickle.size()); }

TEST(Pickle, WritesASizeAndPaddedFields) {
  static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the bytes below are little-endian");
  Pickle pickle;
  EXPECT_EQ(Bytes(pickle), "\0\0\0\0"s);
  EXPECT_TRUE(pickle.WriteString("abcde"));
  EXPECT_TRUE(pickle.WriteInt(-2));
  EXPECT_TRUE(pickle.WriteString(""));
  EXPECT_TRUE(pickle.WriteString("a\0cd"s));
  EXPECT_EQ(Bytes(pickle),
            "\x1c\0\0\0"
            "\x05\0\0\0"
            "abcde\0\0\0"
            "\xfe\xff\xff\xff"
            "\0\0\0\0"
            "\x04\0\0\0a\0cd"s);

  const Pickle borrowed(pickle.data(), pickle.size());
  EXPECT_EQ(borrowed.data(), pickle.data());
  const Pickle copy(borrowed);
  EXPECT_NE(copy.data(), pickle.data());
  PickleIterator reader(copy);
  std::string text;
  int number = 0;
  EXPECT_TRUE(reader.ReadString(&text));
  EXPECT_EQ(text, "abcde");
  EXPECT_TRUE(reader.ReadInt(&number));
  EXPECT_EQ(number, -2);
  EXPECT_TRUE(reader.ReadString(&text));
  EXPECT_EQ(text, "");
  EXPECT_TRUE(reader.ReadString(&text));
  EXPECT_EQ(text, "a\0cd"s);
  EXPECT_FALSE(reader.ReadInt(&number));
}

TEST(Pickle, BorrowedBytesAreForReading) {
  const std::string bytes(4, '\0');
  Pickle borrowed(bytes.data(), bytes.size());
  EXPECT_FALSE(borrowed.WriteInt(1));
  EXPECT_FALSE(borrowed.WriteString(""));
  borrowed = Pickle(borrowed);
  EXPECT_TRUE(borrowed.WriteInt(1));
}

// Each case is copied into memory of its own size, so that the address sanitizer sees a byte too
// many.
TEST(PickleIterator, RefusesWhatDoesNotFit) {
  const struct {
    const char* name;
    std::string bytes;
    bool first_read_works;
  } kCases[] = {
      {"nothing", ""s, false},
      {"half a size", "\x08\0"s, false},
      {"size beyond the end", "\x09\0\0\0\x01\0\0\0abcd"s, false},
      {"huge size", "\xff\xff\xff\xff\x01\0\0\0abcd"s, false},
      {"no field", "\0\0\0\0"s, false},
      {"bytes behind the payload", "\0\0\0\0\x01\0\0\0a"s, false},
      {"half a length", "\x02\0\0\0\x01\0"s, false},
      {"length beyond the end", "\x08\0\0\0\x05\0\0\0abcd"s, false},
      {"length at the largest int", "\x08\0\0\0\xff\xff\xff\x7f"s + "abcd"s, false},
      {"negative length", "\x08\0\0\0\xff\xff\xff\xff"s + "abcd"s, false},
      {"least length", "\x08\0\0\0\0\0\0\x80"s + "abcd"s, false},
      {"padding missing", "\x05\0\0\0\x01\0\0\0a"s, true},
  };
  for (const auto& c : kCases) {
    const auto exact = std::make_unique<char[]>(c.bytes.size());
    std::copy(c.bytes.begin(), c.bytes.end(), exact.get());
    PickleIterator reader(Pickle(exact.get(), c.bytes.size()));
    std::string text = "untouched";
    EXPECT_EQ(reader.ReadString(&text), c.first_read_works) << c.name;
    EXPECT_EQ(text, c.first_read_works ? "a" : "untouched") << c.name;
    int number = 7;
    EXPECT_FALSE(reader.ReadInt(&number)) << c.name;
    EXPECT_EQ(number, 7) << c.name;
  }
}

}  // namespace
