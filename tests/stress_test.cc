// All operations at once from many threads, against a real store and the development cloud, with
// the tick running and a factory reset in the middle. QORN_STRESS_SECONDS sets how long (default
// 2).
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <map>
#include <mutex>
#include <random>
#include <set>
#include <thread>

#include "base/test_clock.h"
#include "base/time.h"
#include "bench/random_steps.h"
#include "core_fw/account/src/account_manager_impl.h"
#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

constexpr int kThreads = 32;
constexpr unsigned kStableUsers = 8;

// The steps, with what must be true of sessions and of users in the end.
class WatchedSteps : public soak::RandomSteps {
 public:
  using RandomSteps::RandomSteps;

  std::set<std::string> removed_;  // Users whose last change was a removal.
  std::atomic<bool> reset_over_{false};

  void CheckSessions(AccountManager& accounts, const std::vector<std::string>& events) {
    for (const std::string& event : events) {
      if (event[0] == '8') ++sessions_[event.substr(event.rfind('|') + 1)].events;
    }
    for (const auto& [id, session] : sessions_) {
      const bool open = accounts.CheckSessionValidation(id) == 1;
      // A sign-out and the tick may both find the session, and then each tells.
      const int by_tick = session.events - session.signed_out;
      EXPECT_TRUE(by_tick == 0 || by_tick == 1) << id;
      const bool by_reset = session.before_reset_ended || id == "none";
      EXPECT_TRUE(open ? session.events == 0 : session.events > 0 || by_reset) << id;
    }
  }

 protected:
  void Call(const gateway::Operation& operation, const soak::Words& words,
            gateway::Answer* answer) override {
    const std::string name = operation.name;
    const bool before = !reset_over_;
    RandomSteps::Call(operation, words, answer);
    EXPECT_TRUE(answer->code == 1 || name != "GetNetworkSettingStatus");
    if (answer->code != 1) return;
    const std::lock_guard<std::mutex> guard(mutex_);
    if (name == "CreateUser") removed_.erase(words[0]);
    if (name == "RemoveUser") removed_.insert(words[0]);
    if (name == "SignOut") ++sessions_[words[0]].signed_out;
    const std::string session = soak::Output(*answer, "session_id");
    if (!session.empty()) sessions_[session].before_reset_ended = before;
  }

 private:
  struct Session {
    bool before_reset_ended = false;  // Its sign-in began before the reset was over.
    int signed_out = 0;               // SignOut calls that answered 1.
    int events = 0;
  };

  std::mutex mutex_;
  std::map<std::string, Session> sessions_;
};

using StressTest = AccountTest;

TEST_F(StressTest, NothingIsLostOrCountedTwice) {
  EventCapture events;
  AccountManagerImpl service;
  const auto issue_code = [this](const std::string& user) { return cloud_->IssueCode(user); };
  WatchedSteps steps(service, kStableUsers, issue_code, cloud_->PeerId(kGatewayAddress));
  std::atomic<bool> stop{false};
  const char* seconds = std::getenv("QORN_STRESS_SECONDS");
  const auto half = std::chrono::milliseconds(seconds == nullptr ? 1000 : 500 * atoi(seconds));
  config_["account_enable_MIRLO_network_setting"] = "on";
  cloud_->AddGateway(kGatewayAddress);
  base::TestClock clock;
  StartRuntime();
  ASSERT_TRUE(service.Init());
  clock.WaitForSleepers(1);  // The network setting is fetched: its strings may be read.
  ASSERT_EQ(service.GetNetworkSettingStatus(), 1);
  steps.MakeStableUsers();

  std::vector<std::thread> threads;
  for (unsigned t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      std::mt19937 random(t);
      const std::string own = "own" + std::to_string(t) + "@x";
      while (!stop) steps.Step(static_cast<unsigned>(random()), own);
    });
  }
  threads.emplace_back([&] {
    while (!stop) {
      clock.WaitForSleepers(1);
      clock.Advance(base::TimeDelta::FromSeconds(60));
      std::this_thread::sleep_for(std::chrono::milliseconds(3));  // The load, not an order.
    }
  });
  std::this_thread::sleep_for(half);
  EXPECT_EQ(steps.Do("do-factory-reset", {}).code, 1);
  steps.reset_over_ = true;
  steps.MakeStableUsers();
  std::this_thread::sleep_for(half);
  stop = true;
  for (std::thread& thread : threads) thread.join();
  clock.WaitForSleepers(1);

  steps.CheckSessions(service, events.Take());
  std::vector<std::string> list;
  EXPECT_EQ(service.GetAllUsersUUID(&list), 1);
  EXPECT_EQ(std::to_string(list.size() - 1), Sql("SELECT count(*) FROM Users").at(0));
  EXPECT_EQ(Sql("PRAGMA integrity_check").at(0), "ok");
  for (const std::string& user : steps.removed_) {
    EXPECT_EQ(Sql("SELECT count(*) FROM Users WHERE userId='" + user + "'").at(0), "0");
  }
  EXPECT_TRUE(service.Shutdown());
  log_.Take();
}

}  // namespace
}  // namespace account
