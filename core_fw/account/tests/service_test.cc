// Sessions, network setting, request hooks, trace lines and life cycle of the service.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>

#include "base/logging.h"
#include "core_fw/account/src/account_log.h"
#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AccountServiceTest : public ServiceTest {
 protected:
  ~AccountServiceTest() override { SetComponentLogLevel(2); }
};

TEST_F(AccountServiceTest, SessionOperationsTraceTheirResult) {
  StartService();
  const std::string session = MakeSession("qornsystem");
  log_.Take();
  std::string user_id = "untouched";
  EXPECT_EQ(service_->GetSessionInfo(session, &user_id), 1);
  EXPECT_EQ(user_id, "qornsystem");
  EXPECT_EQ(service_->CheckSessionValidation(session), 1);
  EXPECT_THAT(log_.Take(),
              ElementsAre(Line(2, "GetSessionInfo", "GetSessionInfoStart"),
                          Line(2, "GetSessionInfo", "GetSessionInfoEndSuccess"),
                          Line(2, "CheckSessionValidation", "CheckSessionValidationStart"),
                          Line(2, "CheckSessionValidation", "CheckSessionValidationEndSuccess")));
  user_id = "untouched";
  EXPECT_EQ(service_->GetSessionInfo("x", &user_id), 2);
  EXPECT_EQ(user_id, "untouched");
  EXPECT_EQ(service_->CheckSessionValidation("x"), 2);
  EXPECT_EQ(service_->ResetCountForSessionMaintenance("x"), 1);
  EXPECT_EQ(service_->SignOut("x"), 2);
  EXPECT_THAT(
      log_.Take(),
      ElementsAre(
          Line(2, "GetSessionInfo", "GetSessionInfoStart"),
          Line(4, "GetSessionInfo", "GetSessionInfoEndInvalid Session ID"),
          Line(2, "CheckSessionValidation", "CheckSessionValidationStart"),
          Line(4, "CheckSessionValidation", "CheckSessionValidationEndInvalid Session ID"),
          Line(2, "ResetCountForSessionMaintenance", "ResetCountForSessionMaintenanceStart"),
          Line(2, "ResetCountForSessionMaintenance", "ResetCountForSessionMaintenanceEndSuccess"),
          Line(2, "SignOut", "SignOutStart"), Line(4, "SignOut", "SignOutEndInvalid Session ID")));
  EXPECT_THAT(events_->Take(), IsEmpty());
}

TEST_F(AccountServiceTest, LifetimeIsThirtyAgainAfterARestart) {
  StartService();
  int lifetime = 0;
  EXPECT_EQ(service_->GetSessionLifetime(&lifetime), 1);
  EXPECT_EQ(lifetime, 30);
  for (int value : {5, 0, -1, INT_MAX}) {
    EXPECT_EQ(service_->SetSessionLifetime(value), 1);
    EXPECT_EQ(service_->GetSessionLifetime(&lifetime), 1);
    EXPECT_EQ(lifetime, value);
  }
  EXPECT_TRUE(service_->Shutdown());
  EXPECT_TRUE(service_->Shutdown());
  EXPECT_TRUE(service_->Init());
  service_->GetSessionLifetime(&lifetime);
  EXPECT_EQ(lifetime, 30);
}

TEST_F(AccountServiceTest, RequestHooksDoNothing) {
  StartService();
  log_.Take();
  EXPECT_EQ(service_->CreateUserRequest("a", ""), 1);
  EXPECT_EQ(service_->GetUserCreationRequest("", "b"), 1);
  EXPECT_EQ(service_->RemoveUserRequest("a", "b"), 1);
  EXPECT_EQ(service_->SearchUser("a", "b"), 1);
  EXPECT_THAT(log_.Take(),
              ElementsAre(Line(2, "CreateUserRequest", "CreateUserRequestStart"),
                          Line(2, "CreateUserRequest", "CreateUserRequestEndSuccess"),
                          Line(2, "GetUserCreationRequest", "GetUserCreationRequestStart"),
                          Line(2, "GetUserCreationRequest", "GetUserCreationRequestEndSuccess"),
                          Line(2, "RemoveUserRequest", "RemoveUserRequestStart"),
                          Line(2, "RemoveUserRequest", "RemoveUserRequestEndSuccess"),
                          Line(2, "SearchUser", "SearchUserStart"),
                          Line(2, "SearchUser", "SearchUserEndSuccess")));
  EXPECT_THAT(cloud_->requests(), IsEmpty());
}

TEST_F(AccountServiceTest, NetworkSettingIsHandedOutAsItStands) {
  StartService();
  log_.Take();
  EXPECT_EQ(service_->GetNetworkSettingStatus(), 0);
  std::string s[6] = {"x", "x", "x", "x", "x", "x"};
  EXPECT_EQ(service_->GetNTSServerInfoAndPeerID(&s[0], &s[1], &s[2], &s[3], &s[4], &s[5]), 1);
  EXPECT_THAT(s, testing::Each(""));
  EXPECT_THAT(
      log_.Take(),
      ElementsAre(Line(2, "GetNetworkSettingStatus",
                       "GetNetworkSettingStatusEnd  network_setting_status = 0"),
                  Line(2, "GetNTSServerInfoAndPeerID", "GetNTSServerInfoAndPeerIDStart"),
                  Line(2, "GetNTSServerInfoAndPeerID", "GetNTSServerInfoAndPeerIDEndSuccess")));
}

TEST_F(AccountServiceTest, AFailedResetKeepsTheSessionsAndWhatItDeleted) {
  StartService();
  MakeUser("ann@x");
  const std::string session = MakeSession("ann@x");
  Sql("DROP TABLE Friends");
  EXPECT_EQ(service_->DoFactoryReset(), 4);
  EXPECT_EQ(service_->CheckSessionValidation(session), 1);
  EXPECT_THAT(Sql("SELECT * FROM Users"), IsEmpty());
  EXPECT_THAT(
      log_.TakeFailures(),
      ElementsAre(Line(4, "DeleteAll", "Fail to sqlite3_exec(), no such table: Friends"),
                  Line(4, "DoFactoryReset", "DoFactoryResetEndFailure to execute DB statement")));
}

TEST_F(AccountServiceTest, BothLevelsGateTheLines) {
  StartService();
  const std::string start = Line(2, "SignOut", "SignOutStart");
  const std::string end = Line(4, "SignOut", "SignOutEndInvalid Session ID");
  const struct {
    int platform;
    int component;
    std::vector<std::string> lines;
  } cases[] = {{0, 2, {start, end}}, {-1, -1, {start, end}}, {0, 3, {end}}, {3, 2, {end}},
               {0, 4, {end}},        {4, 4, {end}},          {0, 5, {}},    {5, 2, {}},
               {2, 2, {start, end}}};
  log_.Take();
  for (const auto& c : cases) {
    logging::SetMinLogLevel(c.platform);
    SetComponentLogLevel(c.component);
    service_->SignOut("x");
    EXPECT_EQ(log_.Take(), c.lines) << c.platform << " " << c.component;
  }
  logging::SetMinLogLevel(0);
}

TEST_F(AccountServiceTest, AnExceptionBecomesAFailure) {
  EXPECT_EQ(RunOperation(FROM_HERE, "Name", []() -> AccountResult { throw std::bad_alloc(); }), 19);
  EXPECT_THAT(log_.Take(), ElementsAre(Line(2, "Name", "NameStart"),
                                       Line(4, "Name", "NameEndFailure for certain reason")));
}

TEST_F(AccountServiceTest, ShutdownRightAfterInitWaitsForTheWorker) {
  StartRuntime();
  for (int i = 0; i < 50; ++i) {
    AccountManagerImpl service;
    EXPECT_TRUE(service.Init());
    EXPECT_TRUE(service.Shutdown());
  }
}

}  // namespace
}  // namespace account
