// Creating, removing, signing in and refreshing users, through the service and a real cloud.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>

#include "base/test_clock.h"
#include "base/time.h"
#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

using devcloud::Fault;
using testing::ElementsAre;
using testing::IsEmpty;

class FlowsTest : public ServiceTest {
 protected:
  FlowsTest() { StartService(); }

  void Refuse(const std::string& path, int status = 500) {
    Fault fault;
    fault.path = path;
    fault.status = status;
    cloud_->AddFault(fault);
  }

  std::vector<std::string> Targets() const {
    std::vector<std::string> targets;
    for (const auto& request : cloud_->requests()) targets.push_back(request.target);
    return targets;
  }
};

constexpr char kToken[] = "/token";
constexpr char kAdd[] = "/device/adduserdevice";
constexpr char kDelete[] = "/device/deleteuserdevice";

TEST_F(FlowsTest, CreateUserStoresWhatTheCloudSays) {
  const struct {
    const char* user_id;
    const char* name;
  } cases[] = {{"ann@home@x", "ann"}, {"ben", "Default"}, {"@cid", ""}};
  base::TestClock clock;
  for (const auto& c : cases) {
    std::string uuid;
    ASSERT_EQ(service_->CreateUser(c.user_id, cloud_->IssueCode(c.user_id), &uuid), 1);
    EXPECT_THAT(Targets(), ElementsAre(kToken, kAdd));
    cloud_->ClearRequests();
    const std::string guid = cloud_->UserGuid(c.user_id);
    EXPECT_TRUE(cloud_->IsRegistered(guid, kGatewayAddress));
    const std::string now = std::to_string(static_cast<long long>(base::Time::Now().ToDoubleT()));
    EXPECT_THAT(Sql("SELECT userId, userName, userGuid, registeredDate, lastSignInDate, "
                    "lastInfoChangedDate FROM Users WHERE userUuid='" +
                    uuid + "'"),
                ElementsAre(std::string(c.user_id) + "|" + c.name + "|" + guid + "|" + now + "|" +
                            now + "|" + now));
    EXPECT_TRUE(cloud_->AcceptsToken(
        guid, Sql("SELECT accessToken FROM Users WHERE userUuid='" + uuid + "'").at(0)));
  }
  events_->Take();
}

TEST_F(FlowsTest, CreateUserFailsStepByStep) {
  std::string uuid = "untouched";
  EXPECT_EQ(service_->CreateUser("ann@x", "no-code", &uuid), 15);
  EXPECT_THAT(log_.Take(),
              ElementsAre(Line(2, "CreateUser", "CreateUserStart"),
                          Line(4, "GetTokensByAuthCode",
                               "GetTokensByAuthCode Error (SendRequest response error)"),
                          Line(4, "CreateUser", "CreateUserEndFailure for ZEP server")));
  Refuse(kAdd);
  EXPECT_EQ(service_->CreateUser("ann@x", cloud_->IssueCode("ann@x"), &uuid), 16);
  EXPECT_THAT(log_.Take(),
              ElementsAre(Line(2, "CreateUser", "CreateUserStart"),
                          Line(4, "AddUserToUserPortal",
                               "AddUserToUserPortal Error (SendRequest response error)"),
                          Line(4, "CreateUser", "CreateUserEndFailure for User Portal server")));
  EXPECT_EQ(uuid, "untouched");
  EXPECT_THAT(Sql("SELECT * FROM Users"), IsEmpty());

  MakeUser("ann@x");
  EXPECT_EQ(service_->CreateUser("ann@x", cloud_->IssueCode("ann@x"), &uuid), 12);
  // Another ID for an account that is stored: the portal's registration was made and stays.
  EXPECT_EQ(service_->CreateUser("other@x", cloud_->IssueCode("ann@x"), &uuid), 13);
  EXPECT_THAT(Targets(), ElementsAre(kToken, kAdd, kToken, kAdd));
  EXPECT_EQ(uuid, "untouched");
  EXPECT_THAT(events_->Take(), IsEmpty());
  log_.Take();
}

TEST_F(FlowsTest, SignInTellsRefusalFromSilence) {
  std::string uuid;
  std::string session;
  MakeUser("ann@x");
  bool flag = true;
  EXPECT_EQ(service_->SignIn("ann@x", "no-code", &uuid, &session, &flag), 15);
  EXPECT_FALSE(flag);
  cloud_->RefuseConnections(true);
  EXPECT_EQ(service_->SignIn("ann@x", "code", &uuid, &session, &flag), 15);
  EXPECT_TRUE(flag);
  cloud_->RefuseConnections(false);
  for (const bool before : {false, true}) {
    flag = before;
    EXPECT_EQ(service_->SignIn("ann@x", cloud_->IssueCode("ann@x"), &uuid, &session, &flag), 1);
    EXPECT_EQ(flag, before);  // Untouched.
  }
  EXPECT_EQ(service_->SignIn("nobody", cloud_->IssueCode("nobody"), &uuid, &session, &flag), 5);
  log_.Take();
}

TEST_F(FlowsTest, SignInRenewsTokensAndDate) {
  const std::string user_uuid = MakeUser("ann@x");
  base::TestClock clock;
  clock.Advance(base::TimeDelta::FromSeconds(100000));
  const std::string before = Sql("SELECT accessToken, refreshToken FROM Users").at(0);
  std::string uuid;
  std::string session;
  bool flag = false;
  ASSERT_EQ(service_->SignIn("ann@x", cloud_->IssueCode("ann@x"), &uuid, &session, &flag), 1);
  EXPECT_EQ(uuid, user_uuid);
  EXPECT_NE(Sql("SELECT accessToken, refreshToken FROM Users").at(0), before);
  EXPECT_EQ(Sql("SELECT lastSignInDate>registeredDate, registeredDate=lastInfoChangedDate, "
                "lastSignInDate FROM Users")
                .at(0),
            "1|1|" + std::to_string(static_cast<long long>(base::Time::Now().ToDoubleT())));
  EXPECT_EQ(service_->CheckSessionValidation(session), 1);
}

TEST_F(FlowsTest, SignInWithAnotherAccountsCodeWritesNothing) {
  MakeUser("ann@x");
  const std::vector<std::string> before = Sql("SELECT * FROM Users");
  std::string uuid = "untouched";
  std::string session = "untouched";
  bool flag = false;
  EXPECT_EQ(service_->SignIn("ann@x", cloud_->IssueCode("ben@x"), &uuid, &session, &flag), 7);
  EXPECT_EQ(Sql("SELECT * FROM Users"), before);
  EXPECT_EQ(uuid + session, "untoucheduntouched");
  EXPECT_THAT(events_->Take(), IsEmpty());
  EXPECT_THAT(log_.TakeFailures(),
              ElementsAre(Line(4, "SignIn",
                               "SignInEndUser GUID in the account DB is different with the user "
                               "GUID in the ZEP server")));
}

TEST_F(FlowsTest, LocalSignInNeedsNoPasswordAndNoCloud) {
  const std::string user_uuid = MakeUser("ann@x");
  cloud_->RefuseConnections(true);
  base::TestClock clock;
  clock.Advance(base::TimeDelta::FromSeconds(100000));
  std::string first;
  std::string second;
  std::string uuid;
  EXPECT_EQ(service_->SignInAlt("ann@x", "", &uuid, &first), 1);
  EXPECT_EQ(service_->SignInAlt("ann@x", "anything", &uuid, &second), 1);
  EXPECT_EQ(uuid, user_uuid);
  EXPECT_NE(first, second);
  EXPECT_EQ(Sql("SELECT lastSignInDate>registeredDate FROM Users").at(0), "1");
  EXPECT_EQ(service_->CheckSessionValidation(first), 1);
  EXPECT_EQ(service_->CheckSessionValidation(second), 1);
  EXPECT_EQ(service_->SignInAlt("nobody", "", &uuid, &first), 5);
  log_.Take();
}

TEST_F(FlowsTest, SignOutOfARemovedUserStillEndsTheSession) {
  MakeUser("ann@x");
  const std::string session = MakeSession("ann@x");
  Sql("DELETE FROM Users");
  EXPECT_EQ(service_->SignOut(session), 5);
  EXPECT_THAT(log_.Take(),
              ElementsAre(Line(2, "SignOut", "SignOutStart"),
                          Line(2, "GetUserUUIDFromUserID", "GetUserUUIDFromUserIDStart"),
                          Line(4, "GetUserUUIDFromUserID",
                               "GetUserUUIDFromUserIDEndThere is no user who has this user ID in "
                               "the account DB"),
                          Line(4, "SignOut",
                               "SignOutEndThere is no user who has this user ID in the account "
                               "DB")));
  EXPECT_EQ(service_->SignOut(session), 2);
  EXPECT_THAT(events_->Take(), IsEmpty());
  log_.Take();
}

TEST_F(FlowsTest, RefreshChangesTheTokensAlone) {
  MakeUser("ann@x");
  const std::string rest =
      "SELECT userUuid, userId, userName, userGuid, registeredDate, lastSignInDate, "
      "lastInfoChangedDate FROM Users";
  const std::vector<std::string> before = Sql(rest);
  const std::string tokens = Sql("SELECT accessToken, refreshToken FROM Users").at(0);
  base::TestClock clock;
  clock.Advance(base::TimeDelta::FromSeconds(100000));
  EXPECT_EQ(service_->RefreshAccessToken("ann@x"), 1);
  EXPECT_EQ(Sql(rest), before);
  const std::string renewed = Sql("SELECT accessToken, refreshToken FROM Users").at(0);
  EXPECT_NE(renewed, tokens);

  Refuse(kToken, 400);
  EXPECT_EQ(service_->RefreshAccessToken("ann@x"), 19);
  EXPECT_EQ(service_->RefreshAccessToken("nobody"), 19);
  EXPECT_THAT(cloud_->requests().back().body, testing::StartsWith("refresh_token=&client_id="));
  EXPECT_EQ(Sql("SELECT accessToken, refreshToken FROM Users").at(0), renewed);
  EXPECT_THAT(events_->Take(), IsEmpty());
  log_.Take();
}

TEST_F(FlowsTest, RemoveUserAsksThePortalFirst) {
  MakeUser("ann@x");
  const std::string ben = MakeUser("ben@x");
  std::string friend_uuid;
  ASSERT_EQ(service_->AddFriendToDB(ben, "f@x", "g", "d", "a", "p", &friend_uuid), 1);
  const std::string rows = "SELECT userId FROM Users UNION ALL SELECT friendId FROM Friends";

  EXPECT_EQ(service_->RemoveUser("nobody", "ben@x"), 5);
  EXPECT_EQ(service_->RemoveUser("ann@x", "nobody"), 5);
  EXPECT_THAT(Targets(), IsEmpty());
  Refuse(kDelete);
  EXPECT_EQ(service_->RemoveUser("ann@x", "ben@x"), 16);
  EXPECT_THAT(Sql(rows), ElementsAre("ann@x", "ben@x", "f@x"));
  log_.Take();

  cloud_->ClearRequests();
  EXPECT_EQ(service_->RemoveUser("ann@x", "ben@x"), 1);
  EXPECT_THAT(Sql(rows), ElementsAre("ann@x"));
  EXPECT_FALSE(cloud_->IsRegistered(cloud_->UserGuid("ben@x"), kGatewayAddress));
  EXPECT_TRUE(cloud_->IsRegistered(cloud_->UserGuid("ann@x"), kGatewayAddress));
  EXPECT_THAT(log_.Take(),
              ElementsAre(Line(2, "RemoveUser", "RemoveUserStart"),
                          Line(2, "GetUserUUIDFromUserID", "GetUserUUIDFromUserIDStart"),
                          Line(2, "GetUserUUIDFromUserID", "GetUserUUIDFromUserIDEndSuccess"),
                          Line(2, "GetUserUUIDFromUserID", "GetUserUUIDFromUserIDStart"),
                          Line(2, "GetUserUUIDFromUserID", "GetUserUUIDFromUserIDEndSuccess"),
                          Line(2, "RemoveUser", "kEventAccountRemoveUser published\n"),
                          Line(2, "RemoveUser", "RemoveUserEndSuccess")));
}

// Refuses the statements that `deny` points out; every connection opened meanwhile asks it.
class Authorizer {
 public:
  explicit Authorizer(int (*deny)(void*, int, const char*, const char*, const char*, const char*)) {
    deny_ = deny;
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(&Install));
  }
  ~Authorizer() { sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(&Install)); }

 private:
  static int Install(sqlite3* database, char** /*error*/, const void* /*api*/) {
    return sqlite3_set_authorizer(database, deny_, nullptr);
  }
  static int (*deny_)(void*, int, const char*, const char*, const char*, const char*);
};
int (*Authorizer::deny_)(void*, int, const char*, const char*, const char*, const char*) = nullptr;

int g_friend_deletions = 0;

int DenySecondFriendDeletion(void*, int action, const char* table, const char*, const char*,
                             const char*) {
  const bool counts = action == SQLITE_DELETE && std::string(table) == "Friends";
  return counts && ++g_friend_deletions == 2 ? SQLITE_DENY : SQLITE_OK;
}

TEST_F(FlowsTest, RemovalStopsAtTheFirstFriendThatFails) {
  StopService();
  AccountController::DestroyInstance();
  const Authorizer authorizer(&DenySecondFriendDeletion);
  service_ = std::make_unique<AccountManagerImpl>();
  events_ = std::make_unique<EventCapture>();
  service_->Init();
  const std::string uuid = MakeUser("ann@x");
  std::string friend_uuid;
  for (const char* friend_id : {"f1", "f2", "f3"}) {
    ASSERT_EQ(service_->AddFriendToDB(uuid, friend_id, "g", "d", "a", "p", &friend_uuid), 1);
  }
  events_->Take();
  EXPECT_EQ(service_->RemoveUser("ann@x", "ann@x"), 4);
  EXPECT_THAT(log_.TakeFailures(),
              ElementsAre(Line(4, "RemoveFriend", "Fail to sqlite3_exec(), not authorized"),
                          Line(4, "RemoveUser", "RemoveUserEndFailure to execute DB statement")));
  EXPECT_THAT(Sql("SELECT friendId FROM Friends"), ElementsAre("f2", "f3"));
  EXPECT_THAT(Sql("SELECT * FROM Users"), IsEmpty());
  EXPECT_THAT(events_->Take(), IsEmpty());
}

}  // namespace
}  // namespace account
