#include "gateway/console.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <sstream>
#include <utility>

#include "gateway/result_names.h"
#include "gateway/tests/fake_account_manager.h"

namespace gateway {
namespace {

class ConsoleTest : public testing::Test {
 protected:
  ConsoleTest() { UseSecrets(false); }

  void UseSecrets(bool show) {
    printer_ = std::make_unique<Printer>(out_, out_, show);
    ConsoleServices services;
    services.accounts = &accounts_;
    services.flush_events = [this] { out_ << "(flush)\n"; };
    services.request_code = [](const std::string& user, std::string* code, std::string* error) {
      (user == "nobody" ? *error : *code) = "answer-to-" + user;
      return user != "nobody";
    };
    services.pause = [this](std::chrono::milliseconds) { return stop_; };
    console_ = std::make_unique<Console>(services, printer_.get(), &activity_);
  }

  // What the line printed, then its error.
  std::string Run(const std::string& line) {
    out_.str("");
    const Console::Outcome outcome = console_->Execute(line);
    return out_.str() + (outcome.error.empty() ? "" : "error: " + outcome.error);
  }

  FakeAccountManager accounts_;
  bool stop_ = false;
  std::ostringstream out_;
  Activity activity_;
  std::unique_ptr<Printer> printer_;
  std::unique_ptr<Console> console_;
};

TEST_F(ConsoleTest, CallsEveryOperationWithItsArgumentsAndShowsItsOutputs) {
  accounts_.output_text = "out";
  const struct {
    const char* line;
    const char* call;
    const char* outputs;
  } cases[] = {
      {"create-user a b", "CreateUser(a,b)", "user_uuid: out1"},
      {"create-user-request a b", "CreateUserRequest(a,b)", ""},
      {"get-user-creation-request a b", "GetUserCreationRequest(a,b)", ""},
      {"remove-user a b", "RemoveUser(a,b)", ""},
      {"remove-user-request a b", "RemoveUserRequest(a,b)", ""},
      {"search-user a b", "SearchUser(a,b)", ""},
      {"get-user-uuid-from-user-id a", "GetUserUUIDFromUserID(a)", "user_uuid: out1"},
      {"get-friend-uuid-from-friend-id-and-friend-peer-id a b c",
       "GetFriendUUIDFromFriendIDAndFriendPeerID(a,b,c)", "friend_uuid: out1"},
      {"sign-in a b", "SignIn(a,b)", "user_uuid: out1 session_id: out2"},
      {"sign-in-alt a ''", "SignInAlt(a,)", "user_uuid: out1 session_id: out2"},
      {"sign-out a", "SignOut(a)", ""},
      {"get-all-users-uuid", "GetAllUsersUUID()", "user_uuids: l1 user_uuids: l2"},
      {"get-user-info-by-type a 101", "GetUserInfoByType(a,101)", "value: out1"},
      {"get-user-info-by-type a 0104", "GetUserInfoByType(a,104)", "value: …"},
      {"set-user-info-by-type a -201 b", "SetUserInfoByType(a,-201,b)", ""},
      {"get-user-information a", "GetUserInformation(a)",
       "user_id: out1 user_name: out2 sign_in_state: out3 user_guid: out4 access_token: … "
       "refresh_token: … registered_date: out7 last_sign_in_date: out8 last_info_changed_date: "
       "out9"},
      {"add-friend-to-db a b c d e f", "AddFriendToDB(a,b,c,d,e,f)", "friend_uuid: out1"},
      {"add-friend-candidate a b c", "AddFriendCandidate(a,b,c)", "friend_auth_code: …"},
      {"add-friend-request a b c d e f", "AddFriendRequest(a,b,c,d,e,f)", "friend_uuid: out1"},
      {"remove-friend-from-db a b c", "RemoveFriendFromDB(a,b,c)", ""},
      {"remove-friend-request a b c", "RemoveFriendRequest(a,b,c)", ""},
      {"get-all-friends-uuid a", "GetAllFriendsUUID(a)", "friend_uuids: l1 friend_uuids: l2"},
      {"get-friend-information a", "GetFriendInformation(a)",
       "friend_id: out1 friend_name: out2 friend_guid: out3 friend_device_name: out4 "
       "friend_device_physical_address_text: out5 friend_peer_id: out6"},
      {"do-factory-reset", "DoFactoryReset()", ""},
      {"get-session-info a", "GetSessionInfo(a)", "user_id: out1"},
      {"check-session-validation 1", "CheckSessionValidation(1)", ""},
      {"reset-count-for-session-maintenance a", "ResetCountForSessionMaintenance(a)", ""},
      {"get-session-lifetime", "GetSessionLifetime()", "lifetime: 30"},
      {"set-session-lifetime 0", "SetSessionLifetime(0)", ""},
      {"get-nts-server-info-and-peer-id", "GetNTSServerInfoAndPeerID()",
       "presence_server: out1 stun_server: out2 turn_server: out3 connection_port: out4 domain: "
       "out5 peer_id: out6"},
      {"parse-account-message '{\"a\": 1}'", "ParseAccountMessage({\"a\": 1})", ""},
      {"refresh-access-token a", "RefreshAccessToken(a)", ""},
  };
  std::set<std::string> names = {"get-network-setting-status"};
  for (const auto& c : cases) {
    const std::string line = c.line;
    const std::string name = line.substr(0, line.find(' '));
    names.insert(name);
    std::string expected = "(flush)\n" + name + ": 1 Success\n";
    std::istringstream outputs(c.outputs);
    for (std::string key, value; outputs >> key >> value;) {
      expected += "  " + key + " " + value + "\n";
    }
    EXPECT_EQ(Run(line), expected);
    EXPECT_EQ(accounts_.calls.back(), c.call);
  }
  EXPECT_EQ(names.size(), 32U);
  EXPECT_EQ(Operations().size(), 32U);
}

TEST_F(ConsoleTest, TreatsTheNetworkStatusAsAStateAndNotAsAResult) {
  accounts_.network_polls_left = 2;
  const std::string name = "get-network-setting-status";
  EXPECT_EQ(Run(name), "(flush)\n" + name + ": status 0\n");
  EXPECT_EQ(Run("expect 0 " + name), "(flush)\n" + name + ": status 0\n");
  EXPECT_EQ(Run("expect 0 " + name),
            "(flush)\n" + name + ": status 1\nerror: " + name + " answered 1, expected 0");
}

TEST_F(ConsoleTest, NamesWhatACommandExpected) {
  const std::pair<const char*, const char*> cases[] = {
      {"sign-in a", "sign-in expects USER_ID CODE, got 1 argument"},
      {"sign-in a b c", "sign-in expects USER_ID CODE, got 3 arguments"},
      {"do-factory-reset now", "do-factory-reset expects no argument, got 1 argument"},
      {"Sign-in a b", "unknown command \"Sign-in\"; \"help\" lists them all"},
      {"'' a", "unknown command \"\"; \"help\" lists them all"},
      {"set-session-lifetime 1x",
       "set-session-lifetime expects LIFETIME: \"1x\" is not a whole number"},
      {"set-session-lifetime 2147483648",
       "set-session-lifetime expects LIFETIME: \"2147483648\" is not a whole number"},
      {"get-user-info-by-type a ''",
       "get-user-info-by-type expects USER_UUID TYPE: \"\" is not a whole number"},
      {"sign-out $session_id", "unknown variable \"session_id\""},
      {"expect 1", "expect expects RESULT COMMAND..., got 1 argument"},
      {"expect good sign-out a",
       "expect: \"good\" is no result: a number, \"success\" or a name such as kAccountNoUser"},
      {"expect 1 sign-out", "sign-out expects SESSION_ID, got 0 arguments"},
      {"expect 1 quit", "expect: quit answers no result"},
      {"expect 1 expect 1 sign-out a", "expect: expect answers no result"},
      {"set 1a b", "set: \"1a\" is no name: letters, digits and \"_\", no digit first"},
      {"help sign", "help: unknown command \"sign\""},
      {"quit now", "quit expects no argument, got 1 argument"},
      {"request-code nobody", "request-code: answer-to-nobody"},
      {"expect success request-code nobody", "request-code: answer-to-nobody"},
  };
  for (const auto& [line, error] : cases) EXPECT_EQ(Run(line), std::string("error: ") + error);
  EXPECT_TRUE(accounts_.calls.empty());
}

TEST_F(ConsoleTest, FailsOnACodeThatWasNotExpected) {
  const std::string shown = "(flush)\ncheck-session-validation: 2 Invalid Session ID\n";
  EXPECT_EQ(Run("check-session-validation 2"),
            shown + "error: check-session-validation answered 2 (Invalid Session ID)");
  EXPECT_EQ(Run("expect 2 check-session-validation 2"), shown);
  EXPECT_EQ(Run("expect kAccountInvalidSessionId check-session-validation 2"), shown);
  EXPECT_EQ(Run("expect success check-session-validation 2"),
            shown + "error: check-session-validation answered 2, expected 1");
  EXPECT_EQ(Run("expect 0 check-session-validation 0"),
            "(flush)\ncheck-session-validation: 0 Undefined Error code\n");
}

TEST_F(ConsoleTest, ShowsWhyASignInFailed) {
  accounts_.result = kAccountZepServerFailure;
  EXPECT_EQ(Run("expect 15 sign-in a b"),
            "(flush)\nsign-in: 15 Failure for ZEP server\n  connection_failed: true\n");
}

TEST_F(ConsoleTest, RemembersTheLatestOutputsByName) {
  Run("request-code alice");
  Run("create-user alice $code");
  EXPECT_EQ(accounts_.calls.back(), "CreateUser(alice,answer-to-alice)");
  Run("set mine ${user_uuid}");
  accounts_.output_text = "new";
  Run("sign-in-alt alice x");
  Run("set-user-info-by-type $mine 201 $user_uuid$session_id");
  EXPECT_EQ(accounts_.calls.back(), "SetUserInfoByType(o1,201,new1new2)");
  Run("get-all-users-uuid");
  Run("sign-out $user_uuids");
  EXPECT_EQ(accounts_.calls.back(), "SignOut(l1 l2)");
}

TEST_F(ConsoleTest, ShortensSecretsUnlessTheyAreWanted) {
  accounts_.output_text = "token-";
  EXPECT_EQ(Run("request-code al"), "request-code: 1 Success\n  code: answ…\n");
  EXPECT_EQ(Run("say the code is $code"), "the code is answ…\n");
  EXPECT_EQ(Run("set-session-lifetime $code"),
            "error: set-session-lifetime expects LIFETIME: \"answ…\" is not a whole number");
  EXPECT_NE(Run("get-user-information a").find("  access_token: toke…\n"), std::string::npos);
  UseSecrets(true);
  EXPECT_EQ(Run("request-code al"), "request-code: 1 Success\n  code: answer-to-al\n");
  EXPECT_EQ(Run("say the code is $code"), "the code is answer-to-al\n");
  EXPECT_NE(Run("get-user-information a").find("  access_token: token-5\n"), std::string::npos);
}

TEST_F(ConsoleTest, ShowsOutputsWithoutTheirControlCharacters) {
  accounts_.output_text = "\x1b[2J";
  EXPECT_EQ(Run("get-session-info a"),
            "(flush)\nget-session-info: 1 Success\n  user_id: \\x1b[2J1\n");
  EXPECT_EQ(Run("sign-out $user_id"),
            "error: control characters are not taken in an argument: \\x1b[2J1");
}

TEST_F(ConsoleTest, WaitsForTheNetworkSettingWithALimit) {
  accounts_.network_polls_left = 3;
  EXPECT_EQ(Run("expect success wait-network"), "wait-network: 1 Success\n");
  EXPECT_EQ(accounts_.calls.size(), 4U);
  accounts_.network_polls_left = 1000;
  EXPECT_EQ(Run("wait-network"),
            "error: wait-network: the network setting status is still 0 after ten seconds");
  stop_ = true;
  EXPECT_EQ(Run("wait-network"), "error: wait-network: told to stop");
}

TEST_F(ConsoleTest, HelpNamesArgumentsAndListsAll) {
  EXPECT_EQ(Run("help sign-out"), "sign-out SESSION_ID\n    close a session\n");
  EXPECT_EQ(Run("help quit"), "quit\n    stop the gateway\n");
  const std::string all = Run("help");
  EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 2 * (32 + 7));
  EXPECT_TRUE(console_->Execute(" quit # now").quit);
}

TEST(ResultNames, HaveTheInterfacesMessages) {
  const struct {
    const char* text;
    int code;
    const char* message;
  } cases[] = {
      {"success", 1, "Success"},
      {"kAccountSuccess", 1, "Success"},
      {"10", 10, "This friend auth code is not vaild."},
      {"kAccountDuplicatedUserId", 12, "Duplicated user ID in the account DB"},
      {"kAccountFailure", 19, "Failure for certain reason"},
      {"20", 20, "Undefined Error code"},
  };
  for (const auto& c : cases) {
    int code = 99;
    EXPECT_TRUE(ParseResult(c.text, &code)) << c.text;
    EXPECT_EQ(code, c.code);
    EXPECT_STREQ(ResultMessage(code), c.message);
  }
}

}  // namespace
}  // namespace gateway
