#include "gateway/words.h"

#include <gtest/gtest.h>

#include <utility>

namespace gateway {
namespace {

using Words = std::vector<std::string>;

Variables SomeVariables() {
  Variables variables;
  variables.Set("code", "C0");
  variables.Set("user_name", "Alice B");
  variables.Set("bad", "a\nb");
  return variables;
}

TEST(SplitWords, FollowsTheShellsQuotes) {
  const std::pair<std::string, Words> cases[] = {
      {"", {}},
      {" \t ", {}},
      {"# all of it", {}},
      {" sign-in  a\tb ", {"sign-in", "a", "b"}},
      {"a b#c # d 'e", {"a", "b#c"}},
      {"a '' \"\"", {"a", "", ""}},
      {"'a b' \"c d\"", {"a b", "c d"}},
      {"a'b c'\"d e\"f", {"ab cd ef"}},
      {R"('a\b"$code')", {R"(a\b"$code)"}},
      {R"("a\"b\\c\$d\e'")", {R"(a"b\c$d\e')"}},
      {R"(a\ b \' \" \\ \# \$code)", {"a b", "'", "\"", "\\", "#", "$code"}},
      {R"({"a":1})", {"{a:1}"}},
      {R"('{"a":1}')", {R"({"a":1})"}},
      {"$code ${code}x $code-$code", {"C0", "C0x", "C0-C0"}},
      {"$user_name \"$user_name!\"", {"Alice B", "Alice B!"}},
      {"$ a$ $1 \"$\"", {"$", "a$", "$1", "$"}},
      {"\xc3\xa9\xed\x95\x9c", {"é한"}},
  };
  for (const auto& [line, expected] : cases) {
    Words words;
    std::string error;
    EXPECT_TRUE(SplitWords(line, SomeVariables(), &words, &error)) << line << ": " << error;
    EXPECT_EQ(words, expected) << line;
  }
}

TEST(SplitWords, RefusesControlCharacters) {
  const std::pair<std::string, std::string> cases[] = {
      {"a 'b\tc'", "b\\x09c"}, {"a b\r\x1b", "b\\x0d\\x1b"}, {std::string("a b\0c", 5), "b\\x00c"},
      {"a b\x7f", "b\\x7f"},   {"a $bad", "a\\x0ab"},
  };
  for (const auto& [line, expected] : cases) {
    Words words = {"untouched"};
    std::string error;
    EXPECT_FALSE(SplitWords(line, SomeVariables(), &words, &error)) << line;
    EXPECT_EQ(error, "control characters are not taken in an argument: " + expected);
    EXPECT_EQ(words, Words{"untouched"});
  }
}

}  // namespace
}  // namespace gateway
