#include "gateway/text.h"

#include <gtest/gtest.h>

#include <utility>

namespace gateway {
namespace {

TEST(ShortenSecret, ShowsFourCharactersAtMost) {
  const std::pair<const char*, const char*> cases[] = {
      {"", ""},          {"a", "…"}, {"abcd", "…"}, {"abcde", "abcd…"}, {"4/0AbCdEfGh", "4/0A…"},
      {"äöüßé", "äöüß…"}};
  for (const auto& [secret, shown] : cases) EXPECT_EQ(ShortenSecret(secret), shown) << secret;
}

TEST(Visible, WritesControlCharactersAsHex) {
  EXPECT_EQ(Visible("a\x1b[2J\n\x7f"), "a\\x1b[2J\\x0a\\x7f");
  EXPECT_EQ(Visible("x\xc2\x9b!"), "x\\xc2\\x9b!");
  EXPECT_EQ(Visible("é ü 한 … \xc2"), "é ü 한 … \xc2");
}

}  // namespace
}  // namespace gateway
