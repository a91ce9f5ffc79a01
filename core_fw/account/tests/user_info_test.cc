#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>

#include "base/test_clock.h"
#include "base/time.h"
#include "core_fw/account/tests/test_support.h"
#include "runtime/runtime.h"

namespace account {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

class UserInfoTest : public ServiceTest {
 protected:
  UserInfoTest() { setenv("TZ", "UTC0", 1); }

  std::string Get(const std::string& uuid, int type) {
    std::string value = "untouched";
    EXPECT_EQ(service_->GetUserInfoByType(uuid, type, &value), 1);
    return value;
  }

  AccountResult GetAll(const std::string& uuid, std::array<std::string, 9>* v) {
    return service_->GetUserInformation(uuid, &(*v)[0], &(*v)[1], &(*v)[2], &(*v)[3], &(*v)[4],
                                        &(*v)[5], &(*v)[6], &(*v)[7], &(*v)[8]);
  }
};

TEST_F(UserInfoTest, EveryTypeReadsItsField) {
  StartService();
  const std::string uuid = MakeUser("ann@x");
  Sql("UPDATE Users SET registeredDate='1384156800', lastSignInDate='1384156801', "
      "lastInfoChangedDate='' WHERE userId='ann@x'");
  const std::string access = Sql("SELECT accessToken FROM Users").at(0);
  const std::string refresh = Sql("SELECT refreshToken FROM Users").at(0);
  const std::string guid = cloud_->UserGuid("ann@x");
  const std::vector<std::pair<int, std::string>> cases = {{99, "untouched"},
                                                          {100, "ann@x"},
                                                          {101, "ann"},
                                                          {102, "Off"},
                                                          {103, guid},
                                                          {104, access},
                                                          {105, refresh},
                                                          {106, "2013/11/11 Monday 8:0:0"},
                                                          {107, "2013/11/11 Monday 8:0:1"},
                                                          {108, "1970/1/1 Thursday 0:0:0"},
                                                          {109, "untouched"},
                                                          {200, "untouched"}};
  for (const auto& [type, value] : cases) EXPECT_EQ(Get(uuid, type), value) << type;
  std::array<std::string, 9> all;
  EXPECT_EQ(GetAll(uuid, &all), 1);
  EXPECT_THAT(all,
              ElementsAre("ann@x", "ann", "Off", guid, access, refresh, "2013/11/11 Monday 8:0:0",
                          "2013/11/11 Monday 8:0:1", "1970/1/1 Thursday 0:0:0"));
}

TEST_F(UserInfoTest, SignInStateFollowsTheSessions) {
  StartService();
  const std::string uuid = MakeUser("ann@x");
  MakeUser("ben@x");
  MakeSession("ben@x");
  EXPECT_EQ(Get(uuid, 102), "Off");
  const std::string first = MakeSession("ann@x");
  const std::string second = MakeSession("ann@x");
  service_->SignOut(first);
  EXPECT_EQ(Get(uuid, 102), "On");
  std::array<std::string, 9> all;
  EXPECT_EQ(GetAll(uuid, &all), 1);
  EXPECT_EQ(all[2], "On");
  service_->SignOut(second);
  EXPECT_EQ(Get(uuid, 102), "Off");
  events_->Take();
}

TEST_F(UserInfoTest, AnUnknownUserTouchesNothing) {
  StartService();
  std::string value = "untouched";
  std::array<std::string, 9> all;
  all.fill("untouched");
  EXPECT_EQ(service_->GetUserInfoByType("nobody", 100, &value), 6);
  EXPECT_EQ(GetAll("nobody", &all), 6);
  EXPECT_EQ(service_->SetUserInfoByType("nobody", 201, "x"), 6);
  EXPECT_EQ(value, "untouched");
  EXPECT_THAT(all, Each("untouched"));
  EXPECT_THAT(events_->Take(), IsEmpty());
  log_.Take();
}

TEST_F(UserInfoTest, ARenameTakesTheSessionsAlong) {
  StartService();
  const std::string uuid = MakeUser("ann@x");
  MakeUser("ben@x");
  const std::string first = MakeSession("ann@x");
  const std::string other = MakeSession("ben@x");
  const std::string second = MakeSession("ann@x");
  base::TestClock clock;
  clock.Advance(base::TimeDelta::FromSeconds(100000));
  // Another user has this ID already: not looked at.
  EXPECT_EQ(service_->SetUserInfoByType(uuid, 200, "ben@x"), 1);
  EXPECT_EQ(
      Sql("SELECT userId, userName, lastInfoChangedDate FROM Users WHERE userUuid='" + uuid + "'")
          .at(0),
      "ben@x|ann|" + std::to_string(static_cast<long long>(base::Time::Now().ToDoubleT())));
  for (const std::string& session : {first, second, other}) {
    std::string user_id;
    EXPECT_EQ(service_->GetSessionInfo(session, &user_id), 1);
    EXPECT_EQ(user_id, "ben@x");
  }
  EXPECT_THAT(events_->Take(), ElementsAre("5 " + uuid + "|ben@x|ann"));
}

TEST_F(UserInfoTest, OtherDatesAreWrittenBackAsTheyAreShown) {
  StartService();
  const std::string uuid = MakeUser("ann@x");
  const std::string dates = "SELECT registeredDate, lastSignInDate, lastInfoChangedDate FROM Users";
  const std::string shown = "2013/11/11 Monday 8:0:0";
  Sql("UPDATE Users SET registeredDate='1384156800', lastSignInDate='1384156800', "
      "lastInfoChangedDate='1384156800'");
  // A type that is none rewrites the row and publishes all the same.
  EXPECT_EQ(service_->SetUserInfoByType(uuid, 300, "ignored"), 1);
  EXPECT_THAT(Sql(dates), ElementsAre(shown + "|" + shown + "|" + shown));
  EXPECT_THAT(events_->Take(), ElementsAre("5 " + uuid + "|ann@x|ann"));

  Sql("UPDATE Users SET registeredDate='1384156800'");
  EXPECT_EQ(service_->SetUserInfoByType(uuid, 201, "Ann"), 1);
  EXPECT_EQ(Sql("SELECT userName, registeredDate FROM Users").at(0), "Ann|" + shown);
  EXPECT_THAT(events_->Take(), ElementsAre("5 " + uuid + "|ann@x|Ann"));
  // Read again, the written-back form counts as the number that it begins with.
  EXPECT_EQ(Get(uuid, 106), "1970/1/1 Thursday 0:33:33");
}

TEST_F(UserInfoTest, AStoreThatFailsAfterTheSessionsWereRepointedUndoesNothing) {
  StartService();
  const std::string uuid = MakeUser("ann@x");
  const std::string session = MakeSession("ann@x");
  Sql("ALTER TABLE Users RENAME COLUMN refreshToken TO gone");
  EXPECT_EQ(service_->SetUserInfoByType(uuid, 200, "new@x"), 4);
  std::string user_id;
  EXPECT_EQ(service_->GetSessionInfo(session, &user_id), 1);
  EXPECT_EQ(user_id, "new@x");
  EXPECT_THAT(events_->Take(), IsEmpty());
  log_.Take();
}

TEST_F(UserInfoTest, SessionModeDecidesOverTheDefaultUser) {
  const struct {
    const char* mode;           // Null: absent.
    const char* default_value;  // Null: absent.
    std::vector<std::string> list;
    bool announced;
  } cases[] = {
      {nullptr, "d", {"kept", "qornsystem"}, false},
      {"on", "d", {"kept", "qornsystem"}, false},
      {"off", "d", {"kept", "qornsystem", "d"}, true},
      {"On", "d", {"kept", "qornsystem", "d"}, true},
      {"", "d", {"kept", "qornsystem", "d"}, true},
      {"off", "", {"kept", "qornsystem", ""}, true},
      {"off", nullptr, {"kept", "qornsystem"}, false},
  };
  for (const auto& c : cases) {
    config_.erase("account_use_session");
    config_.erase("account_default_value");
    if (c.mode != nullptr) config_["account_use_session"] = c.mode;
    if (c.default_value != nullptr) config_["account_default_value"] = c.default_value;
    StartService();
    log_.Take();
    std::vector<std::string> list{"kept"};
    EXPECT_EQ(service_->GetAllUsersUUID(&list), 1);
    EXPECT_EQ(list, c.list);
    std::vector<std::string> lines = {Line(2, "GetAllUsersUUID", "GetAllUsersUUIDStart")};
    if (c.announced) {
      lines.push_back(
          Line(2, "GetAllUsersUUID", "Session Mode is OFF and default user uuid is added"));
    }
    lines.push_back(Line(2, "GetAllUsersUUID", "GetAllUsersUUIDEndSuccess"));
    EXPECT_EQ(log_.Take(), lines);
    StopService();
    runtime::Runtime::Destroy();
  }
}

}  // namespace
}  // namespace account
