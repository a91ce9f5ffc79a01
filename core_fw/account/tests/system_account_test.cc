// The system account, which has no row, through every operation on users.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>

#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr char kSystem[] = "qornsystem";

class SystemAccountTest : public ServiceTest {};

TEST_F(SystemAccountTest, NeedsItsPassword) {
  StartService();
  for (const char* wrong : {"", "mivu583", "MIVU5830", "mivu58300"}) {
    std::string uuid = "untouched";
    std::string session = "untouched";
    EXPECT_EQ(service_->SignInAlt(kSystem, wrong, &uuid, &session), 19);
    EXPECT_EQ(uuid + session, "untoucheduntouched");
  }
  EXPECT_THAT(events_->Take(), IsEmpty());
  EXPECT_THAT(log_.TakeFailures(),
              testing::Each(Line(4, "SignInAlt", "SignInAltEndFailure for certain reason")));
  std::string uuid;
  std::string session;
  EXPECT_EQ(service_->SignInAlt(kSystem, "mivu5830", &uuid, &session), 1);
  EXPECT_EQ(uuid, kSystem);
  EXPECT_EQ(service_->SignOut(session), 1);
  EXPECT_THAT(events_->Take(), ElementsAre("7 qornsystem|qornsystem|" + session,
                                           "8 qornsystem|qornsystem|" + session));
}

TEST_F(SystemAccountTest, AnswersWithoutADatabase) {
  config_.erase("account_db_path");
  StartService();
  log_.Take();
  std::string uuid;
  std::string session;
  EXPECT_EQ(service_->SignInAlt(kSystem, "mivu5830", &uuid, &session), 1);
  EXPECT_EQ(service_->GetUserUUIDFromUserID(kSystem, &uuid), 1);
  EXPECT_EQ(service_->GetUserUUIDFromUserID("ann@x", &uuid), 3);
  EXPECT_EQ(service_->DoFactoryReset(), 3);
  EXPECT_EQ(service_->CheckSessionValidation(session), 1);  // A failed reset keeps the sessions.
  std::vector<std::string> list;
  EXPECT_EQ(service_->GetAllUsersUUID(&list), 3);
  EXPECT_THAT(list, IsEmpty());
  EXPECT_EQ(service_->SignOut(session), 1);
  events_->Take();
  log_.Take();
}

TEST_F(SystemAccountTest, ReadsItsFixedRecord) {
  setenv("TZ", "UTC0", 1);
  StartService();
  MakeSession(kSystem);
  std::array<std::string, 9> v;
  v.fill("untouched");
  EXPECT_EQ(service_->GetUserInformation(kSystem, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6],
                                         &v[7], &v[8]),
            1);
  const std::string epoch = "1970/1/1 Thursday 0:0:0";
  EXPECT_THAT(v, ElementsAre(kSystem, kSystem, "On", kSystem, "", "", epoch, epoch, epoch));
}

TEST_F(SystemAccountTest, ARenameMovesItsSessionsThoughThereIsNoRow) {
  StartService();
  const std::string session = MakeSession(kSystem);
  EXPECT_EQ(service_->SetUserInfoByType(kSystem, 200, "other"), 1);
  std::string user_id;
  EXPECT_EQ(service_->GetSessionInfo(session, &user_id), 1);
  EXPECT_EQ(user_id, "other");
  EXPECT_THAT(events_->Take(), ElementsAre("5 qornsystem|other|qornsystem"));
  EXPECT_THAT(Sql("SELECT * FROM Users"), IsEmpty());
}

TEST_F(SystemAccountTest, RemovalAsksThePortalUnderItsOwnName) {
  StartService();
  devcloud::Fault agree;
  agree.kind = devcloud::Fault::Kind::kBody;
  agree.body = "<?xml version=\"1.0\"?><response><result>success</result></response>";
  cloud_->AddFault(agree);
  EXPECT_EQ(service_->RemoveUser(kSystem, kSystem), 1);
  const std::string raw = cloud_->requests().at(0).raw;
  EXPECT_THAT(raw, HasSubstr("x-dpx-userId: qornsystem\r\n"));
  EXPECT_THAT(raw, HasSubstr("oauth_token=, "));
  EXPECT_THAT(raw, HasSubstr("<userID>qornsystem</userID>"));
  EXPECT_THAT(events_->Take(), ElementsAre("4 qornsystem|qornsystem|qornsystem"));
}

TEST_F(SystemAccountTest, RefreshSendsAnEmptyToken) {
  StartService();
  EXPECT_EQ(service_->RefreshAccessToken(kSystem), 19);
  EXPECT_THAT(cloud_->requests().at(0).body, StartsWith("refresh_token=&client_id="));
  log_.Take();
}

TEST_F(SystemAccountTest, ACodeOfARealAccountIsNotItsOwn) {
  StartService();
  std::string uuid;
  std::string session;
  bool flag = false;
  EXPECT_EQ(service_->SignIn(kSystem, cloud_->IssueCode("ann@x"), &uuid, &session, &flag), 7);
  EXPECT_THAT(events_->Take(), IsEmpty());
  log_.Take();
}

TEST_F(SystemAccountTest, SurvivesAFactoryReset) {
  StartService();
  MakeUser("ann@x");
  const std::string session = MakeSession("ann@x");
  EXPECT_EQ(service_->DoFactoryReset(), 1);
  EXPECT_EQ(service_->DoFactoryReset(), 1);
  std::vector<std::string> list;
  EXPECT_EQ(service_->GetAllUsersUUID(&list), 1);
  EXPECT_THAT(list, ElementsAre(kSystem));
  EXPECT_EQ(service_->SignOut(session), 2);
  EXPECT_THAT(events_->Take(), IsEmpty());
  EXPECT_EQ(cloud_->requests().size(), 0u);
  log_.Take();
}

}  // namespace
}  // namespace account
