#include "devcloud/account_server.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace devcloud {
namespace {

class AccountServerTest : public testing::Test {
 protected:
  Answer Token(const std::string& body) {
    RecordedRequest request;
    request.body = body;
    return IssueTokens(accounts_, request);
  }

  Clock clock_;
  Accounts accounts_{clock_, std::chrono::seconds(77)};
};

bool Has(const Answer& answer, const std::string& text) {
  return answer.body.find(text) != std::string::npos;
}

bool HasLine(const Answer& answer, const std::string& line) {
  return std::count(answer.header_lines.begin(), answer.header_lines.end(), line) == 1;
}

TEST_F(AccountServerTest, GrantsTokensForUnencodedForms) {
  const std::string code = accounts_.IssueCode("ann");
  const Answer answer = Token(
      "&client_id=gate way&grant_type=authorization_code&service_type=M&client_secret=a=b%"
      "&physical_address_text=AABB&code=" +
      code);
  EXPECT_EQ(answer.status, 200) << answer.body;
  EXPECT_EQ(answer.content_type, "application/json");
  EXPECT_TRUE(HasLine(answer, "Cache-Control: no-store"));
  EXPECT_TRUE(Has(answer, "\"userId\":\"" + accounts_.GuidOf("ann") + "\""));
  EXPECT_TRUE(Has(answer, "\"expires_in\":77"));
  const std::size_t begin = answer.body.find("refresh_token\":\"") + 16;
  const std::string token = answer.body.substr(begin, answer.body.find('"', begin) - begin);
  const std::string refresh = "&client_id=a&grant_type=refresh_token&client_secret=b";
  EXPECT_EQ(Token("refresh_token=" + token + refresh).status, 200);
}

TEST_F(AccountServerTest, RefusesBadTokenRequests) {
  const std::string client = "client_id=a&client_secret=b&";
  const std::string code = accounts_.IssueCode("ann");
  const struct {
    std::string body;
    const char* error;
  } kCases[] = {
      {"", "invalid_request"},
      {client, "invalid_request"},
      {client + "grant_type=authorization_code", "invalid_request"},
      {client + "grant_type=authorization_code&code=", "invalid_request"},
      {client + "grant_type=refresh_token&refresh_token=", "invalid_request"},
      {client + "grant_type=authorization_code&code=" + code + "&code=x", "invalid_request"},
      {client + "grant_type=password&code=" + code, "unsupported_grant_type"},
      {"client_id=&client_secret=b&grant_type=authorization_code&code=" + code, "invalid_client"},
      {"client_id=a&grant_type=authorization_code&code=" + code, "invalid_client"},
      {client + "grant_type=authorization_code&code=guess", "invalid_grant"},
      {client + "grant_type=refresh_token&refresh_token=" + code, "invalid_grant"},
  };
  for (const auto& test : kCases) {
    const Answer answer = Token(test.body);
    EXPECT_EQ(answer.status, 400) << test.body;
    EXPECT_TRUE(Has(answer, "\"error\":\"" + std::string(test.error) + "\"")) << test.body;
    EXPECT_TRUE(HasLine(answer, "Cache-Control: no-store"));
  }
  EXPECT_TRUE(accounts_.RedeemCode(code)) << "a refusal has used up the code";
}

TEST_F(AccountServerTest, AuthorizeDecodesTheUserIdAndShowsBrowsersAPage) {
  const std::pair<const char*, const char*> kCases[] = {
      {"user=ann%40example", "ann@example"},
      {"&user=a+b%2Bc", "a b+c"},
      {"user=%C3%a4%4", "\xC3\xA4%4"},
      {"user=x%zz", "x%zz"},
  };
  RecordedRequest request;
  for (const auto& [body, user_id] : kCases) {
    request.body = body;
    EXPECT_EQ(Authorize(accounts_, request).status, 200) << body;
    EXPECT_NE(accounts_.GuidOf(user_id), "") << body;
  }
  request.body = "user=";
  EXPECT_EQ(Authorize(accounts_, request).status, 400);
  request.body = "user=<b>";
  request.header_lines = {"accept:text/html,*/*"};
  EXPECT_TRUE(Has(Authorize(accounts_, request), "Code for &lt;b&gt;"));
}

TEST_F(AccountServerTest, CodesAndTokensGrowOld) {
  const std::string used_in_time = accounts_.IssueCode("ann");
  const std::string too_late = accounts_.IssueCode("ann");
  clock_.Advance(std::chrono::seconds(595));
  const auto ann = accounts_.RedeemCode(used_in_time);
  ASSERT_TRUE(ann);
  EXPECT_FALSE(accounts_.RedeemCode(used_in_time));
  clock_.Advance(std::chrono::seconds(6));
  EXPECT_FALSE(accounts_.RedeemCode(too_late));
  const auto bob = accounts_.RedeemCode(accounts_.IssueCode("bob"));
  EXPECT_TRUE(accounts_.AcceptsToken(ann->guid, ann->access_token));
  EXPECT_FALSE(accounts_.AcceptsToken(ann->guid, bob->access_token));
  EXPECT_FALSE(accounts_.AcceptsToken(ann->guid, ann->refresh_token));
  EXPECT_FALSE(accounts_.AcceptsToken("", ""));
  clock_.Advance(std::chrono::seconds(78));
  EXPECT_FALSE(accounts_.AcceptsToken(ann->guid, ann->access_token));
}

TEST_F(AccountServerTest, RefreshTokensRotateAndSecretsNeedNoEncoding) {
  EXPECT_EQ(accounts_.IssueCode(""), "");
  EXPECT_EQ(accounts_.GuidOf("nobody"), "");
  const std::string code = accounts_.IssueCode("ann&<b>\xff");
  const auto first = accounts_.RedeemCode(code);
  const auto second = accounts_.Refresh(first->refresh_token);
  ASSERT_TRUE(second);
  EXPECT_EQ(second->guid, first->guid);
  EXPECT_NE(second->access_token, first->access_token);
  EXPECT_FALSE(accounts_.Refresh(first->refresh_token));
  EXPECT_TRUE(accounts_.Refresh(second->refresh_token));
  // Gateways put them into forms and XML as they are.
  for (const std::string& text : {code, first->guid, first->access_token, first->refresh_token}) {
    EXPECT_EQ(text.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-"), text.npos) << text;
  }
}

}  // namespace
}  // namespace devcloud
