#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "base/json_reader.h"
#include "base/json_writer.h"
#include "base/values.h"

namespace {

using base::DictionaryValue;
using base::JSONReader;
using base::JSONWriter;
using base::ListValue;
using base::Value;
using std::string_literals::operator""s;

std::string Nested(int levels) {
  std::string text;
  for (int i = 0; i < levels; ++i) text += i % 2 == 0 ? "[" : "{\"a\":";
  text += "1";
  for (int i = levels - 1; i >= 0; --i) text += i % 2 == 0 ? "]" : "}";
  return text;
}

TEST(JSONReader, AcceptsStrictJson) {
  const struct {
    std::string text;
    std::string written;
  } kCases[] = {
      {"{}", "{}"},
      {"\xef\xbb\xbf[1]", "[1]"},
      {" \t\r\n[ 1 , \"a\" ] ", "[1,\"a\"]"},
      {"\"lone value\"", "\"lone value\""},
      {"null", "null"},
      {"[true,false,null]", "[true,false,null]"},
      {R"({"b":1,"a":{"c.d":[]},"B":2})", R"({"B":2,"a":{"c.d":[]},"b":1})"},
      {R"({"a":1,"b":0,"a":"last"})", R"({"a":"last","b":0})"},
      {"[2147483647,-2147483648]", "[2147483647,-2147483648]"},
      {"[2147483648,-2147483649]", "[2147483648.0,-2147483649.0]"},
      {"[18446744073709551616]", "[1.8446744073709552e+19]"},
      {"[-0,1.5,1e2]", "[0,1.5,100.0]"},
      {R"(["\u00e4\ud83d\ude00\u0000\/"])", "[\"ä😀\\u0000/\"]"},
      {Nested(100), Nested(100)},
  };
  for (const auto& c : kCases) {
    const auto value = JSONReader::Read(c.text);
    ASSERT_NE(value, nullptr) << c.text;
    std::string written;
    EXPECT_TRUE(JSONWriter::Write(*value, &written));
    EXPECT_EQ(written, c.written);
  }
  int integer = 0;
  double number = 0;
  EXPECT_TRUE(JSONReader::Read("2147483647")->GetAsInteger(&integer));
  EXPECT_FALSE(JSONReader::Read("2147483648")->GetAsInteger(&integer));
  EXPECT_TRUE(JSONReader::Read("2147483648")->GetAsDouble(&number));
  EXPECT_EQ(number, 2147483648.0);
}

TEST(JSONReader, RefusesEverythingElse) {
  const std::string kCases[] = {
      "",
      " ",
      "\xef\xbb\xbf",
      "\xef\xbb\xbf\xef\xbb\xbf{}",
      "[1,]",
      "{\"a\":1,}",
      "{'a':1}",
      "{a:1}",
      "[1] 2",
      "{}x",
      "[01]",
      "[+1]",
      "[.5]",
      "[1.]",
      "[NaN]",
      "[1e999]",
      "[1",
      "\"",
      "// c\n1",
      "/**/1",
      "tru",
      "True",
      "[\"\t\"]",
      "[\"\\x\"]",
      "[\"\xff\"]",
      "[\"\xc0\xaf\"]",
      "[\"\xed\xa0\x80\"]",
      "[\"\\ud800\"]",
      "[\"\\udc00\"]",
      "{}\0"s,
      "{\0}"s,
      "{}\0garbage"s,
      "[\"\0\"]"s,
      Nested(101),
      std::string(200000, '['),
      "{\"a\" 1}",
  };
  for (const std::string& text : kCases) EXPECT_EQ(JSONReader::Read(text), nullptr) << text;
}

TEST(JSONWriter, EscapesAndReplaces) {
  const struct {
    std::string text;
    std::string written;
  } kCases[] = {
      {"\"\\/", R"("\"\\/")"},
      {"\b\f\n\r\t", R"("\b\f\n\r\t")"},
      {"\x01\x1f\x7f\0"s, "\"\\u0001\\u001f\x7f\\u0000\""},
      {"ä€😀", "\"ä€😀\""},
      {"a\xff"
       "b",
       "\"a\xef\xbf\xbd"
       "b\""},
  };
  for (const auto& c : kCases) {
    std::string written = "replaced";
    EXPECT_TRUE(JSONWriter::Write(Value(c.text), &written));
    EXPECT_EQ(written, c.written);
  }
  std::string written;
  EXPECT_TRUE(JSONWriter::Write(Value(std::numeric_limits<double>::infinity()), &written));
  EXPECT_EQ(written, "null");

  auto nested = std::make_unique<ListValue>();
  for (int levels = 1; levels < 101; ++levels) {
    auto outer = std::make_unique<ListValue>();
    outer->Append(std::move(nested));
    nested = std::move(outer);
  }
  EXPECT_FALSE(JSONWriter::Write(*nested, &written));
  EXPECT_EQ(written, "null");
}

TEST(DictionaryValue, LeavesTheOutputAloneWhenTheTypeIsAnother) {
  const auto root =
      JSONReader::Read(R"({"s":"x","i":5,"d":{"k":"v"},"l":["e",{"k":"w"}],"n":null})");
  const DictionaryValue* members = nullptr;
  ASSERT_TRUE(root->GetAsDictionary(&members));
  for (const char* key : {"s", "i", "d", "l", "n", "absent", "d.k"}) {
    const std::string name = key;
    std::string text = "untouched";
    int number = 77;
    const DictionaryValue* dictionary = members;
    const ListValue* list = nullptr;
    EXPECT_EQ(members->GetString(name, &text), name == "s") << name;
    EXPECT_EQ(text, name == "s" ? "x" : "untouched");
    EXPECT_EQ(members->GetInteger(name, &number), name == "i") << name;
    EXPECT_EQ(number, name == "i" ? 5 : 77);
    EXPECT_EQ(members->GetDictionary(name, &dictionary), name == "d") << name;
    EXPECT_EQ(dictionary == members, name != "d");
    EXPECT_EQ(members->GetList(name, &list), name == "l") << name;
    EXPECT_EQ(list == nullptr, name != "l");
  }
  const ListValue* list = nullptr;
  ASSERT_TRUE(members->GetList("l", &list));
  std::string text;
  const DictionaryValue* element = nullptr;
  EXPECT_EQ(list->GetSize(), 2U);
  EXPECT_TRUE(list->GetString(0, &text) && text == "e");
  EXPECT_FALSE(list->GetString(1, &text) || list->GetString(2, &text));
  EXPECT_FALSE(list->GetDictionary(0, &element) || list->GetDictionary(2, &element));
  EXPECT_TRUE(list->GetDictionary(1, &element) && element->GetString("k", &text) && text == "w");
}

}  // namespace
