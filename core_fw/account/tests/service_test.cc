// What the scenarios cannot reach of the service as a whole.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <uuid/uuid.h>

#include <array>
#include <atomic>
#include <thread>
#include <tuple>

#include "base/logging.h"
#include "core_fw/account/src/account_controller.h"
#include "core_fw/account/src/account_log.h"
#include "core_fw/account/src/account_manager_impl.h"
#include "core_fw/account/src/account_operation.h"
#include "core_fw/account/src/session_table.h"
#include "core_fw/account/tests/test_support.h"

namespace {

bool g_same_uuid = false;

}  // namespace

// Instead of libuuid's, so that two sessions can have one ID.
extern "C" void uuid_generate(uuid_t uuid) {
  g_same_uuid ? uuid_clear(uuid) : uuid_generate_random(uuid);
}

namespace account {
namespace {

TEST(ServiceFrame, BothLevelsGateTheLines) {
  LogCapture log;
  const std::string start = "2 #account#Name#  NameStart";
  const std::string end = "4 #account#Name#  NameEndInvalid Session ID";
  const std::tuple<int, int, std::vector<std::string>> cases[] = {
      {0, 2, {start, end}}, {-1, -1, {start, end}}, {0, 3, {end}}, {3, 2, {end}},
      {0, 4, {end}},        {4, 4, {end}},          {0, 5, {}},    {5, 2, {}},
      {2, 2, {start, end}}};
  for (const auto& [platform, component, lines] : cases) {
    logging::SetMinLogLevel(platform);
    SetComponentLogLevel(component);
    EXPECT_EQ(RunOperation(FROM_HERE, "Name", [] { return 2; }), 2);
    EXPECT_EQ(log.Take(), lines) << platform << " " << component;
  }
  logging::SetMinLogLevel(0);
  SetComponentLogLevel(2);
}

TEST(SessionTable, AResetIsForEveryRecordWithTheId) {
  SessionTable table;
  std::string first, second;
  g_same_uuid = true;
  for (std::string* id : {&first, &second}) EXPECT_EQ(table.AddSession("ann", id), 1);
  g_same_uuid = false;
  EXPECT_EQ(first, second);
  EXPECT_EQ(table.SetLifetime(2), 1);
  for (int i = 0; i < 2; ++i) {
    bool expired = true;
    EXPECT_EQ(table.CountAndCheckExpiry(first, &expired), 1);
    EXPECT_FALSE(expired);
    EXPECT_EQ(table.ResetSessionCount(first), 1);
  }
}

using ServiceTest = AccountTest;

TEST_F(ServiceTest, TheTimerNamesWhereItRepeats) {
  const MessageLoop loop;
  StartRuntime();
  AccountChecker checker;
  checker.Prepare();
  EXPECT_STREQ(checker.started_from().function_name(), "StartRepeat");
  EXPECT_STREQ(checker.started_from().file_name(), "core_fw/account/src/account_manager_impl.cc");
  AccountController::DestroyInstance();  // Made by the checker.
}

TEST_F(ServiceTest, ASecondInitOfTheControllerKeepsWhatIsAbsentAndForgetsTheCandidates) {
  config_["account_enable_MIRLO_network_setting"] = "on";
  cloud_->AddGateway(kGatewayAddress);
  StartRuntime();
  AccountController controller;
  ASSERT_TRUE(controller.Init());
  std::string code, guid, uuid, peer_id;
  ASSERT_EQ(controller.AddFriendCandidate("u", "f", "p", &code), 1);
  for (int i = 0; i < 3; ++i) controller.InitNetworkSetting();
  EXPECT_EQ(cloud_->requests().size(), 2u);  // The network setting is fetched once.
  config_.erase("OAuth_AsClient_app_id");
  config_["OAuth_AsClient_app_secret"] = "other";
  StartRuntime();
  EXPECT_TRUE(controller.Init());
  EXPECT_EQ(controller.SendAddFriendMessage("f", code, "c", "m", "a", &guid, &uuid, &peer_id), 10);
  EXPECT_EQ(controller.CreateAccount("ann@x", "c", &uuid), 15);
  const std::string body = cloud_->requests().at(2).body;
  EXPECT_THAT(body, testing::HasSubstr("&client_id=app-id&"));
  EXPECT_THAT(body, testing::HasSubstr("&client_secret=other&"));
  log_.Take();
}

TEST_F(ServiceTest, ASessionThatEndsWhileTheStateIsReadCutsTheAnswerShort) {
  StartRuntime();
  AccountManagerImpl service;
  ASSERT_TRUE(service.Init());
  SessionTable* const table = SessionTable::GetInstance();
  std::string id;
  // So many that reading them all takes longer than the processor leaves a thread alone.
  for (int i = 0; i < 2000; ++i) table->AddSession("qornsystem", &id);
  std::atomic<bool> stop{false};
  std::thread opens_and_ends([&] {
    for (std::string brief; !stop; table->RemoveSession(brief)) {
      table->AddSession("x", &brief);
      std::this_thread::yield();
    }
  });
  std::array<std::string, 9> v;
  const std::string u = "untouched";
  do {
    v.fill(u);
  } while (service.GetUserInformation("qornsystem", &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6],
                                      &v[7], &v[8]) != 2);
  EXPECT_THAT(v, testing::ElementsAre("qornsystem", "qornsystem", "Off", u, u, u, u, u, u));
  do {
    v[0] = u;
  } while (service.GetUserInfoByType("qornsystem", 102, &v[0]) != 2);
  EXPECT_EQ(v[0], u);
  while (service.SetUserInfoByType("qornsystem", 200, "y") != 2) {
  }
  stop = true;
  opens_and_ends.join();
  EXPECT_TRUE(service.Shutdown());
  log_.Take();
}

}  // namespace
}  // namespace account
