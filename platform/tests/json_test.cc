#include <gtest/gtest.h>

#include <limits>

#include "base/json_reader.h"
#include "base/json_writer.h"
#include "base/values.h"
#include "tests/test_support.h"

namespace {

using base::JSONReader;
using std::string_literals::operator""s;

// A hundred levels, the most there may be; the innermost is a list or a dictionary.
std::string Deep(bool is_list) {
  std::string text = is_list ? "[1]" : "{\"a\":1}";
  for (int i = 1; i < 100; ++i) text = i % 2 ? "[" + text + "]" : "{\"a\":" + text + "}";
  return text;
}

std::string Write(const base::Value& value) {
  std::string text = "untouched";
  const bool written = base::JSONWriter::Write(value, &text);
  EXPECT_EQ(written, text != "untouched");
  return text;
}

void ExpectRead(const std::string& text, const std::string& written) {
  const auto value = JSONReader::Read(text);
  EXPECT_EQ(value == nullptr ? "refused" : Write(*value), written) << text;
}

TEST(JSONReader, IsStrict) {
  for (const auto& [text, written] : ReadCases(TEST_DATA "json_cases.txt"))
    ExpectRead(text, written);
  ExpectRead("\xef\xbb\xbf \t\r\n[1]", "[1]");
  for (const std::string& text :
       {"\xef\xbb\xbf"s, "\xef\xbb\xbf\xef\xbb\xbf{}"s, "[\"\xff\"]"s, "[\"\xc0\xaf\"]"s,
        "[\"\xed\xa0\x80\"]"s, "{}\0"s, "{\0}"s, "{}\0x"s, "[\"\0\"]"s, std::string(200000, '[')}) {
    ExpectRead(text, "refused");
  }
}

TEST(JSON, IsAHundredLevelsDeepAtMost) {
  for (const bool is_list : {true, false}) {
    ExpectRead(Deep(is_list), Deep(is_list));
    ExpectRead("[" + Deep(is_list) + "]", "refused");
    base::ListValue deeper;
    deeper.Append(JSONReader::Read(Deep(is_list)));
    EXPECT_EQ(Write(deeper), "untouched");
  }
}

TEST(JSONWriter, EscapesAndReplaces) {
  const std::string kCases[][2] = {{"\"\\/", R"("\"\\/")"},
                                   {"\\", R"("\\")"},
                                   {"\b\f\n\r\t", R"("\b\f\n\r\t")"},
                                   {"\x01\x1f\x7f\0"s, "\"\\u0001\\u001f\x7f\\u0000\""},
                                   {"ä€😀a\xff.", "\"ä€😀a\xef\xbf\xbd.\""}};
  for (const auto& [text, written] : kCases) EXPECT_EQ(Write(base::Value(text)), written);
  EXPECT_EQ(Write(base::Value(std::numeric_limits<double>::infinity())), "null");
}

}  // namespace
