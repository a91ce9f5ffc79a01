#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "base/json_reader.h"
#include "base/json_writer.h"
#include "base/values.h"

namespace {

using base::DictionaryValue;
using base::JSONReader;
using base::JSONWriter;
using base::ListValue;
using std::string_literals::operator""s;

std::string Nested(int levels) {
  std::string text = "1";
  for (int i = levels; i > 0; --i) {
    const bool is_list = i % 2 == 1;
    text = (is_list ? "[" : "{\"a\":") + text + (is_list ? "]" : "}");
  }
  return text;
}

std::string Write(const base::Value& value) {
  std::string text = "untouched";
  const bool written = JSONWriter::Write(value, &text);
  EXPECT_EQ(written, text != "untouched");
  return text;
}

TEST(JSONReader, AcceptsStrictJson) {
  // Each text is followed by how it is written again.
  std::istringstream cases(R"(
      {} {} "lone" "lone" null null [true,false,null] [true,false,null] [-0,1.5,1e2] [0,1.5,100.0]
      {"b":1,"a":{"c.d":[]},"B":2} {"B":2,"a":{"c.d":[]},"b":1}
      {"a":1,"b":0,"a":"last"} {"a":"last","b":0} ["\u00e4\ud83d\ude00\u0000\/"] ["ä😀\u0000/"]
      [2147483647,-2147483648] [2147483647,-2147483648]
      [2147483648,-2147483649] [2147483648.0,-2147483649.0]
      [18446744073709551616] [1.8446744073709552e+19])");
  const auto expect = [](const std::string& text, const std::string& written) {
    const auto value = JSONReader::Read(text);
    ASSERT_NE(value, nullptr) << text;
    EXPECT_EQ(Write(*value), written);
  };
  std::string text;
  std::string written;
  while (cases >> text >> written) expect(text, written);
  expect("\xef\xbb\xbf \t\r\n[ 1 , \"a b\" ] ", "[1,\"a b\"]");
  expect(Nested(100), Nested(100));
}

TEST(JSONReader, RefusesEverythingElse) {
  std::istringstream cases(R"(
      [1,] {"a":1,} {'a':1} {a:1} [1]2 {}x [01] [+1] [.5] [1.] [NaN] [1e999] [1 " /**/1 tru True
      ["\x"] ["\ud800"] ["\udc00"])");
  for (std::string text; cases >> text;) EXPECT_EQ(JSONReader::Read(text), nullptr) << text;
  for (const std::string& text :
       {""s, " "s, "\xef\xbb\xbf"s, "\xef\xbb\xbf\xef\xbb\xbf{}"s, "// c\n1"s, "[\"\t\"]"s,
        "[\"\xff\"]"s, "[\"\xc0\xaf\"]"s, "[\"\xed\xa0\x80\"]"s, "{}\0"s, "{\0}"s, "{}\0x"s,
        "[\"\0\"]"s, Nested(101), std::string(200000, '[')}) {
    EXPECT_EQ(JSONReader::Read(text), nullptr) << text;
  }
}

TEST(JSONWriter, EscapesAndReplaces) {
  const std::string kCases[][2] = {{"\"\\/", R"("\"\\/")"},
                                   {"\b\f\n\r\t", R"("\b\f\n\r\t")"},
                                   {"\x01\x1f\x7f\0"s, "\"\\u0001\\u001f\x7f\\u0000\""},
                                   {"ä€😀", "\"ä€😀\""},
                                   {"a\xff.", "\"a\xef\xbf\xbd.\""}};
  for (const auto& [text, written] : kCases) EXPECT_EQ(Write(base::Value(text)), written);
  EXPECT_EQ(Write(base::Value(std::numeric_limits<double>::infinity())), "null");
  auto nested = std::make_unique<ListValue>();
  for (int levels = 1; levels < 101; ++levels) {
    auto outer = std::make_unique<ListValue>();
    outer->Append(std::move(nested));
    nested = std::move(outer);
  }
  EXPECT_EQ(Write(*nested), "untouched");
}

TEST(DictionaryValue, LeavesTheOutputAloneWhenTheTypeIsAnother) {
  const auto root = JSONReader::Read(R"({"s":"x","d":{"k":"v"},"l":["e",{}],"n":null})");
  const DictionaryValue* members = nullptr;
  ASSERT_TRUE(root->GetAsDictionary(&members));
  for (const std::string key : {"s", "d", "l", "n", "absent", "d.k"}) {
    std::string text = "untouched";
    const DictionaryValue* dictionary = nullptr;
    const ListValue* list = nullptr;
    EXPECT_EQ(members->GetString(key, &text), key == "s");
    EXPECT_EQ(text, key == "s" ? "x" : "untouched");
    EXPECT_EQ(members->GetDictionary(key, &dictionary), key == "d");
    EXPECT_EQ(members->GetList(key, &list), key == "l");
    EXPECT_TRUE((dictionary != nullptr) == (key == "d") && (list != nullptr) == (key == "l"));
    if (list == nullptr) continue;
    EXPECT_TRUE(list->GetString(0, &text) && !list->GetString(1, &text) && text == "e");
    EXPECT_TRUE(list->GetDictionary(1, &dictionary) && !list->GetDictionary(2, &dictionary));
  }
}

}  // namespace
