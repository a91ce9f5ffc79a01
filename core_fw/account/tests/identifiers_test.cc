#include "core_fw/account/src/identifiers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "core_fw/account/src/account_result.h"
#include "core_fw/account/src/dates.h"
#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

TEST(Identifiers, MakeUuidMarksTheKind) {
  const struct {
    int kind;
    char first;
  } cases[] = {{1, '1'}, {2, '2'}, {3, '4'}, {4, '5'}, {0, '0'}, {5, '0'}, {-1, '0'}};
  for (const auto& c : cases) {
    const std::string uuid = MakeUuid(c.kind);
    EXPECT_THAT(uuid, testing::MatchesRegex("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"));
    EXPECT_EQ(uuid[0], c.first) << c.kind;
    EXPECT_NE(uuid, MakeUuid(c.kind));
  }
}

TEST(Identifiers, FormatDateShowsLocalTimeWithoutPadding) {
  const struct {
    const char* zone;
    const char* stored;
    const char* shown;
  } cases[] = {
      {"UTC0", "1384156800", "2013/11/11 Monday 8:0:0"},
      {"UTC0", "", "1970/1/1 Thursday 0:0:0"},
      {"UTC0", "no number", "1970/1/1 Thursday 0:0:0"},
      {"UTC0", "99999999999", "2038/1/19 Tuesday 3:14:7"},
      // A displayed date that was written back reads as its year.
      {"UTC0", "2013/11/11 Monday 8:0:0", "1970/1/1 Thursday 0:33:33"},
      {"KST-9", "1384156800", "2013/11/11 Monday 17:0:0"},
      {"KST-9", "1384614000", "2013/11/17 Sunday 0:0:0"},
      {"KST-9", "1384527600", "2013/11/16 Saturday 0:0:0"},
      {"KST-9", "1384441200", "2013/11/15 Friday 0:0:0"},
  };
  for (const auto& c : cases) {
    setenv("TZ", c.zone, 1);
    EXPECT_EQ(FormatDate(c.stored), c.shown) << c.zone << " " << c.stored;
  }
  unsetenv("TZ");
}

TEST(AccountResult, MessagesAreFixed) {
  for (int code = -1; code <= 20; ++code) EXPECT_EQ(AccountResultToString(code), Message(code));
}

}  // namespace
}  // namespace account
