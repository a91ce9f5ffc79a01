// What all operations of the service share: their lines, their last catch, the life they live in.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

#include "base/logging.h"
#include "core_fw/account/src/account_log.h"
#include "core_fw/account/src/account_manager_impl.h"
#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

constexpr char kStart[] = "2 #account#Name#  NameStart";

TEST(ServiceFrame, BothLevelsGateTheLines) {
  LogCapture log;
  const std::string end = "4 #account#Name#  NameEndInvalid Session ID";
  const struct {
    int platform;
    int component;
    std::vector<std::string> lines;
  } cases[] = {{0, 2, {kStart, end}}, {-1, -1, {kStart, end}}, {0, 3, {end}}, {3, 2, {end}},
               {0, 4, {end}},         {4, 4, {end}},           {0, 5, {}},    {5, 2, {}},
               {2, 2, {kStart, end}}};
  for (const auto& c : cases) {
    logging::SetMinLogLevel(c.platform);
    SetComponentLogLevel(c.component);
    EXPECT_EQ(RunOperation(FROM_HERE, "Name", [] { return 2; }), 2);
    EXPECT_EQ(log.Take(), c.lines) << c.platform << " " << c.component;
  }
  logging::SetMinLogLevel(0);
  SetComponentLogLevel(2);
}

TEST(ServiceFrame, AnExceptionBecomesAFailure) {
  LogCapture log;
  EXPECT_EQ(RunOperation(FROM_HERE, "Name", []() -> AccountResult { throw std::bad_alloc(); }), 19);
  EXPECT_THAT(log.Take(),
              testing::ElementsAre(kStart, "4 #account#Name#  NameEndFailure for certain reason"));
}

using ServiceTest = AccountTest;

TEST_F(ServiceTest, ShutdownRightAfterInitWaitsForTheWorker) {
  StartRuntime();
  for (int i = 0; i < 50; ++i) {
    AccountManagerImpl service;
    EXPECT_TRUE(service.Init());
    EXPECT_TRUE(service.Shutdown());
  }
}

}  // namespace
}  // namespace account
