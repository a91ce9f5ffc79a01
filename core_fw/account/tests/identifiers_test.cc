#include "core_fw/account/src/identifiers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "core_fw/account/src/account_result.h"
#include "core_fw/account/src/dates.h"
#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

// The other kinds are in the scenarios.
TEST(Identifiers, AUuidOfNoKindBeginsWithZero) {
  for (const int kind : {-1, 0, 5}) EXPECT_EQ(MakeUuid(kind)[0], '0') << kind;
}

TEST(Identifiers, FormatDateShowsLocalTimeWithoutPadding) {
  const struct {
    const char* zone;
    const char* stored;
    const char* shown;
  } cases[] = {
      {"UTC0", "1384156800", "2013/11/11 Monday 8:0:0"},
      {"UTC0", "", "1970/1/1 Thursday 0:0:0"},
      {"UTC0", "99999999999", "2038/1/19 Tuesday 3:14:7"},
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
