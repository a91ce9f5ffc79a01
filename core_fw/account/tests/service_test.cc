#include <gtest/gtest.h>

#include "core_fw/account/src/account_manager_impl.h"
#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

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
