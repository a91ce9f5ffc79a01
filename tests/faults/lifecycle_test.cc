// The component's whole life many times in one process.
// QORN_LIFECYCLE_ROUNDS sets how many times (default 200).
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "core_fw/account/include/account_manager.h"
#include "core_fw/account/src/account_records.h"
#include "core_fw/account/tests/test_support.h"
#include "runtime/runtime.h"

namespace faults {
namespace {

struct Usage {
  long descriptors, threads, resident_kib;
};

Usage GetUsage() {
  long total = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return {account::CountEntries("/proc/self/fd"), account::CountEntries("/proc/self/task"),
          resident * sysconf(_SC_PAGESIZE) / 1024};
}

class LifeCycle : public account::AccountTest {
 protected:
  LifeCycle() {
    config_["account_enable_MIRLO_network_setting"] = "on";
    cloud_->AddGateway(account::kGatewayAddress);
  }

  void LiveOnce() {
    StartRuntime();
    runtime::Runtime* const runtime = runtime::Runtime::GetInstance();
    std::string error;
    ASSERT_TRUE(runtime->LoadComponent(account::LibraryPath(), &error)) << error;
    void* found = nullptr;
    ASSERT_TRUE(runtime->QueryInterface("account_interface", &found));
    auto* const accounts = static_cast<AccountManager*>(found);
    std::string uuid, session;
    // Once: the cloud, which is in this process too, never forgets a token.
    if (accounts->GetUserUUIDFromUserID("ann@x", &uuid) != 1) {
      ASSERT_EQ(accounts->CreateUser("ann@x", cloud_->IssueCode("ann@x"), &uuid), 1);
    }
    for (const char* user : {"ann@x", "ann@x", "qornsystem"}) {
      ASSERT_EQ(accounts->SignInAlt(user, account::kSystemAccountPassword, &uuid, &session), 1);
    }
    ASSERT_EQ(accounts->SignOut(session), 1);
    runtime::Runtime::Destroy();
    cloud_->ClearRequests();
    log_.Take();
  }
};

TEST_F(LifeCycle, LeavesNothingBehind) {
  constexpr int kWarmUp = 100;
  const char* const wanted = std::getenv("QORN_LIFECYCLE_ROUNDS");
  const int rounds = wanted == nullptr ? 200 : std::atoi(wanted);
  Usage start{};
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    if (round == kWarmUp) start = GetUsage();
    LiveOnce();
  }
  EXPECT_TRUE(account::WaitForEntries("/proc/self/fd", start.descriptors));
  EXPECT_TRUE(account::WaitForEntries("/proc/self/task", start.threads));
  const Usage end = GetUsage();
  std::printf(
      "%d lives; after %d and at the end: descriptors %ld %ld, threads %ld %ld, resident "
      "KiB %ld %ld\n",
      rounds, kWarmUp, start.descriptors, end.descriptors, start.threads, end.threads,
      start.resident_kib, end.resident_kib);
#ifndef QORN_SANITIZED
  EXPECT_LE(end.resident_kib, start.resident_kib + 512);
#endif
}

}  // namespace
}  // namespace faults
