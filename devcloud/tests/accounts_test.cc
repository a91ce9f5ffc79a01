#include "devcloud/accounts.h"

#include <gtest/gtest.h>

namespace devcloud {
namespace {

using std::chrono::minutes;
using std::chrono::seconds;

class AccountsTest : public testing::Test {
 protected:
  Clock clock_;
  Accounts accounts_{clock_, minutes(60)};
};

TEST_F(AccountsTest, CodesWorkOnce) {
  const std::string code = accounts_.IssueCode("ann@example");
  const auto grant = accounts_.RedeemCode(code);
  ASSERT_TRUE(grant);
  EXPECT_EQ(grant->guid, accounts_.GuidOf("ann@example"));
  EXPECT_FALSE(accounts_.RedeemCode(code));
  EXPECT_EQ(accounts_.IssueCode(""), "");
  EXPECT_EQ(accounts_.GuidOf("nobody"), "");
}

TEST_F(AccountsTest, CodesLiveTenMinutes) {
  const std::string used_in_time = accounts_.IssueCode("ann");
  const std::string too_late = accounts_.IssueCode("ann");
  clock_.Advance(minutes(10) - seconds(5));
  EXPECT_TRUE(accounts_.RedeemCode(used_in_time));
  clock_.Advance(seconds(6));
  EXPECT_FALSE(accounts_.RedeemCode(too_late));
}

TEST_F(AccountsTest, RefreshTokensRotate) {
  const auto first = accounts_.RedeemCode(accounts_.IssueCode("ann"));
  const auto second = accounts_.Refresh(first->refresh_token);
  ASSERT_TRUE(second);
  EXPECT_EQ(second->guid, first->guid);
  EXPECT_NE(second->access_token, first->access_token);
  EXPECT_FALSE(accounts_.Refresh(first->refresh_token));
  EXPECT_TRUE(accounts_.Refresh(second->refresh_token));
}

TEST_F(AccountsTest, AccessTokensAreTheirUsersAndGrowOld) {
  const auto ann = accounts_.RedeemCode(accounts_.IssueCode("ann"));
  const auto bob = accounts_.RedeemCode(accounts_.IssueCode("bob"));
  EXPECT_TRUE(accounts_.AcceptsToken(ann->guid, ann->access_token));
  EXPECT_FALSE(accounts_.AcceptsToken(ann->guid, bob->access_token));
  EXPECT_FALSE(accounts_.AcceptsToken(ann->guid, ann->refresh_token));
  EXPECT_FALSE(accounts_.AcceptsToken("", ""));
  clock_.Advance(minutes(61));
  EXPECT_FALSE(accounts_.AcceptsToken(ann->guid, ann->access_token));
}

// Gateways put codes, tokens and GUIDs into forms and XML as they are.
TEST_F(AccountsTest, SecretsNeedNoEncoding) {
  const std::string code = accounts_.IssueCode("ann&<b>\xff");
  const auto grant = accounts_.RedeemCode(code);
  for (const std::string& text : {code, grant->guid, grant->access_token, grant->refresh_token}) {
    EXPECT_EQ(text.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-"), text.npos) << text;
  }
}

}  // namespace
}  // namespace devcloud
