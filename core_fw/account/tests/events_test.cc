// What each operation publishes, and what happens when the bus gives no event object.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "core_fw/account/tests/test_support.h"
#include "evt/event_manager.h"

namespace account {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

class EventsTest : public ServiceTest {
 protected:
  void SetUp() override {
    StartService();
    ann_ = MakeUser("ann@x");
    service_->AddFriendToDB(ann_, "f@x", "g", "d", "a", "p", &friend_);
    session_ = MakeSession("ann@x");
    log_.Take();
    events_->Take();
  }

  AccountResult CreateBen() {
    code_ = cloud_->IssueCode("ben@x");
    return service_->CreateUser("ben@x", code_, &uuid_);
  }
  AccountResult SignIn() {
    bool flag = false;
    code_ = cloud_->IssueCode("ann@x");
    return service_->SignIn("ann@x", code_, &uuid_, &new_session_, &flag);
  }

  std::string ann_, friend_, session_, new_session_, code_, uuid_, new_friend_;
};

struct Case {
  int number;
  const char* name;       // In the log.
  const char* operation;  // Whose lines tell.
  std::function<AccountResult()> run;
  std::function<std::string()> payload;
  std::function<bool()> done;  // The change, which no refused event undoes.
};

TEST_F(EventsTest, PayloadsAndRefusals) {
  const std::vector<Case> cases = {
      {1, "kEventAccountAddFriend", "AddFriendToDB",
       [&] { return service_->AddFriendToDB(ann_, "n@x", "g", "d", "a", "np", &new_friend_); },
       [&] { return ann_ + "|" + new_friend_ + "|n@x|np"; },
       [&] { return Sql("SELECT * FROM Friends WHERE friendId='n@x'").size() == 1; }},
      {3, "kEventAccountRemoveFriend", "RemoveFriendFromDB",
       [&] { return service_->RemoveFriendFromDB(ann_, "n@x", "np"); },
       [&] { return ann_ + "|n@x|np"; },
       [&] { return Sql("SELECT * FROM Friends WHERE friendId='n@x'").empty(); }},
      {2, "kEventAccountCreateUser", "CreateUser", [&] { return CreateBen(); },
       [&] { return uuid_ + "|ben@x|" + code_; },
       [&] { return Sql("SELECT * FROM Users WHERE userId='ben@x'").size() == 1; }},
      {4, "kEventAccountRemoveUser", "RemoveUser",
       [&] { return service_->RemoveUser("ann@x", "ben@x"); },
       [&] { return uuid_ + "|ben@x|ann@x"; },
       [&] { return Sql("SELECT * FROM Users WHERE userId='ben@x'").empty(); }},
      {5, "kEventAccountSetUserInformation", "SetUserInfoByType",
       [&] { return service_->SetUserInfoByType(ann_, 201, "Ann"); },
       [&] { return ann_ + "|ann@x|Ann"; },
       [&] { return Sql("SELECT * FROM Users WHERE userName='Ann'").size() == 1; }},
      {6, "kEventAccountSignIn", "SignIn", [&] { return SignIn(); },
       [&] { return ann_ + "|ann@x|" + code_ + "|" + new_session_; },
       [&] { return service_->CheckSessionValidation(new_session_) == 1; }},
      {8, "kEventAccountSignOut", "SignOut", [&] { return service_->SignOut(new_session_); },
       [&] { return ann_ + "|ann@x|" + new_session_; },
       [&] { return service_->CheckSessionValidation(new_session_) == 2; }},
      {7, "kEventAccountSignInAlt", "SignInAlt",
       [&] { return service_->SignInAlt("ann@x", "", &uuid_, &new_session_); },
       [&] { return ann_ + "|ann@x|" + new_session_; },
       [&] { return service_->CheckSessionValidation(new_session_) == 1; }},
  };
  for (const bool refused : {false, true}) {
    for (const Case& c : cases) {
      SCOPED_TRACE(std::string(c.name) + (refused ? ", refused" : ""));
      evt::EventManager::GetInstance()->RefuseForTest(c.number, refused);
      EXPECT_EQ(c.run(), refused ? 19 : 1);
      const std::string op = c.operation;
      const auto published = Line(2, op, std::string(c.name) + " published\n");
      const auto failed = Line(4, op, "Publish " + std::string(c.name) + " failed.");
      const std::vector<std::string> lines = log_.Take();
      if (refused) {
        EXPECT_THAT(lines, AllOf(Contains(failed), Not(Contains(published))));
        EXPECT_EQ(lines.back(), Line(4, op, op + "EndFailure for certain reason"));
        EXPECT_THAT(events_->Take(), IsEmpty());
      } else {
        // The removal of a friend is silent.
        EXPECT_EQ(testing::Value(lines, Contains(published)), c.number != 3);
        EXPECT_EQ(lines.back(), Line(2, op, op + "EndSuccess"));
        EXPECT_THAT(events_->Take(), ElementsAre(std::to_string(c.number) + " " + c.payload()));
      }
      EXPECT_TRUE(c.done());
      evt::EventManager::GetInstance()->RefuseForTest(c.number, false);
      log_.Take();
    }
  }
}

TEST_F(EventsTest, NumbersAreFixed) {
  const int numbers[] = {kEventAccountAddFriend,          kEventAccountCreateUser,
                         kEventAccountRemoveFriend,       kEventAccountRemoveUser,
                         kEventAccountSetUserInformation, kEventAccountSignIn,
                         kEventAccountSignInAlt,          kEventAccountSignOut};
  EXPECT_THAT(numbers, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
}

}  // namespace
}  // namespace account
