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

  struct Session {
    bool before_reset_ended = false;  // Its sign-in began before the reset was over.
    int signed_out = 0;               // SignOut calls that answered 1.
    int events = 0;
  };

  std::mutex mutex_;
  std::map<std::string, Session> sessions_;
  std::set<std::string> removed_;  // Users whose last change was a removal.
  std::atomic<bool> reset_over_{false};
  std::atomic<long> calls_{0};

 protected:
  void Call(const gateway::Operation& operation, const soak::Words& words,
            gateway::Answer* answer) override {
    const std::string name = operation.name;
    const bool before = !reset_over_;
    RandomSteps::Call(operation, words, answer);
    ++calls_;
    EXPECT_TRUE(answer->code == 1 || name != "get-network-setting-status");
    if (answer->code != 1) return;
    const std::lock_guard<std::mutex> guard(mutex_);
    if (name == "create-user") removed_.erase(words[0]);
    if (name == "remove-user") removed_.insert(words[0]);
    if (name == "sign-out") ++sessions_[words[0]].signed_out;
    const std::string session = soak::Output(*answer, "session_id");
    if (!session.empty()) sessions_[session].before_reset_ended = before;
  }
};

class StressTest : public AccountTest {
 protected:
  EventCapture events_;
  AccountManagerImpl service_;
  WatchedSteps steps_{service_, kStableUsers,
                      [this](const std::string& user) { return cloud_->IssueCode(user); },
                      cloud_->PeerId(kGatewayAddress)};
  std::atomic<bool> stop_{false};
};

TEST_F(StressTest, NothingIsLostOrCountedTwice) {
  const char* seconds = std::getenv("QORN_STRESS_SECONDS");
  const auto half = std::chrono::milliseconds(seconds == nullptr ? 1000 : 500 * atoi(seconds));
  config_["account_enable_MIRLO_network_setting"] = "on";
  cloud_->AddGateway(kGatewayAddress);
  base::TestClock clock;
  StartRuntime();
  ASSERT_TRUE(service_.Init());
  clock.WaitForSleepers(1);  // The network setting is fetched: its strings may be read.
  ASSERT_EQ(service_.GetNetworkSettingStatus(), 1);
  steps_.MakeStableUsers();

  std::vector<std::thread> threads;
  for (unsigned t = 0; t < kThreads; ++t) {
    threads.emplace_back([this, t] {
      std::mt19937 random(t);
      const std::string own = "own" + std::to_string(t) + "@x";
      while (!stop_) steps_.Step(static_cast<unsigned>(random()), own);
    });
  }
  threads.emplace_back([this, &clock] {
    while (!stop_) {
      clock.WaitForSleepers(1);
      clock.Advance(base::TimeDelta::FromSeconds(60));
      std::this_thread::sleep_for(std::chrono::milliseconds(3));  // The load, not an order.
    }
  });
  std::this_thread::sleep_for(half);
  EXPECT_EQ(service_.DoFactoryReset(), 1);
  steps_.reset_over_ = true;
  steps_.MakeStableUsers();
  std::this_thread::sleep_for(half);
  stop_ = true;
  for (std::thread& thread : threads) thread.join();
  clock.WaitForSleepers(1);

  for (const std::string& event : events_.Take()) {
    const bool sign_out = event[0] == '8';
    if (sign_out) ++steps_.sessions_[event.substr(event.rfind('|') + 1)].events;
  }
  int twice = 0;
  for (const auto& [id, session] : steps_.sessions_) {
    const bool open = service_.CheckSessionValidation(id) == 1;
    // A sign-out and the tick may both find the session, and then each tells.
    const int by_tick = session.events - session.signed_out;
    EXPECT_TRUE(by_tick == 0 || by_tick == 1) << id;
    if (session.events > 1) ++twice;
    if (open) {
      EXPECT_EQ(session.events, 0) << id;
    } else if (session.events == 0) {
      EXPECT_TRUE(session.before_reset_ended || id == "none") << id;
    }
  }
  std::vector<std::string> list;
  EXPECT_EQ(service_.GetAllUsersUUID(&list), 1);
  EXPECT_EQ(std::to_string(list.size() - 1), Sql("SELECT count(*) FROM Users").at(0));
  EXPECT_EQ(Sql("PRAGMA integrity_check").at(0), "ok");
  for (const std::string& user : steps_.removed_) {
    EXPECT_EQ(Sql("SELECT count(*) FROM Users WHERE userId='" + user + "'").at(0), "0");
  }
  EXPECT_TRUE(service_.Shutdown());
  std::printf("%ld calls, %zu sessions, %d ended by sign-out and tick together\n",
              steps_.calls_.load(), steps_.sessions_.size(), twice);
  log_.Take();
}

}  // namespace
}  // namespace account
