#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include "core_fw/account/src/account_controller.h"
#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

using testing::HasSubstr;

using ControllerTest = AccountTest;

TEST_F(ControllerTest, ASecondInitKeepsWhatIsAbsentAndForgetsTheCandidates) {
  StartRuntime();
  AccountController controller;
  ASSERT_TRUE(controller.Init());
  std::string code, guid, uuid, peer_id;
  ASSERT_EQ(controller.AddFriendCandidate("u", "f", "p", &code), 1);
  config_.erase("OAuth_AsClient_app_id");
  config_["OAuth_AsClient_app_secret"] = "other";
  StartRuntime();
  EXPECT_TRUE(controller.Init());
  EXPECT_EQ(controller.SendAddFriendMessage("f", code, "c", "m", "a", &guid, &uuid, &peer_id), 10);
  EXPECT_EQ(controller.CreateAccount("ann@x", "c", &uuid), 15);
  const std::string body = cloud_->requests().at(0).body;
  EXPECT_THAT(body, HasSubstr("&client_id=app-id&"));
  EXPECT_THAT(body, HasSubstr("&client_secret=other&"));
  log_.Take();
}

TEST_F(ControllerTest, TheNetworkSettingIsFetchedOnce) {
  config_["account_enable_MIRLO_network_setting"] = "on";
  cloud_->AddGateway(kGatewayAddress);
  StartRuntime();
  AccountController controller;
  ASSERT_TRUE(controller.Init());
  for (int i = 0; i < 3; ++i) controller.InitNetworkSetting();
  EXPECT_EQ(controller.GetNetworkSettingStatus(), 1);
  EXPECT_EQ(cloud_->requests().size(), 2u);
}

int g_rows = 0;

int CountRow(unsigned /*event*/, void* /*context*/, void* /*statement*/, void* /*detail*/) {
  ++g_rows;
  return 0;
}

// SQLite calls it for each connection that is opened.
int TraceRows(sqlite3* database, char** /*error*/, const void* /*routines*/) {
  return sqlite3_trace_v2(database, SQLITE_TRACE_ROW, &CountRow, nullptr);
}

TEST_F(ControllerTest, TheNetworkSettingReadsTheWholeListOfUsers) {
  config_["account_enable_MIRLO_network_setting"] = "on";
  StartRuntime();
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(&TraceRows));
  AccountController controller;
  EXPECT_TRUE(controller.Init());
  sqlite3_reset_auto_extension();
  Sql("INSERT INTO Users (userUuid) VALUES ('u'), ('v'), ('w')");
  g_rows = 0;
  controller.InitNetworkSetting();
  EXPECT_EQ(g_rows, 3);
  log_.Take();
}

}  // namespace
}  // namespace account
