// All operations at once from many threads, against a real store and the development cloud, with
// the tick running and a factory reset in the middle. QORN_STRESS_SECONDS sets how long (default
// 2).
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <map>
#include <random>
#include <thread>

#include "base/test_clock.h"
#include "base/time.h"
#include "core_fw/account/src/account_manager_impl.h"
#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

constexpr int kThreads = 32;
constexpr unsigned kStableUsers = 8;

std::string StableUser(unsigned number) {
  return "stable" + std::to_string(number % kStableUsers) + "@x";
}

class StressTest : public AccountTest {
 protected:
  struct Session {
    bool before_reset_ended = false;  // Its sign-in began before the reset was over.
    int signed_out = 0;               // SignOut calls that answered 1.
    int events = 0;
  };

  void Opened(const std::string& session_id, bool before_reset_ended) {
    const std::lock_guard<std::mutex> guard(mutex_);
    sessions_[session_id].before_reset_ended = before_reset_ended;
    session_ids_.push_back(session_id);
  }

  std::string AnySession(unsigned number) {
    const std::lock_guard<std::mutex> guard(mutex_);
    return session_ids_.empty() ? "none" : session_ids_[number % session_ids_.size()];
  }

  void SignOut(const std::string& session_id) {
    const AccountResult result = service_.SignOut(session_id);
    const std::lock_guard<std::mutex> guard(mutex_);
    if (result == 1) ++sessions_[session_id].signed_out;
  }

  void MakeStableUsers() {
    for (unsigned i = 0; i < kStableUsers; ++i) {
      std::string uuid;
      service_.CreateUser(StableUser(i), cloud_->IssueCode(StableUser(i)), &uuid);
    }
  }

  // One operation, chosen by `number`; `own` is a user that no other thread touches.
  void Step(unsigned number, const std::string& own, bool* removed);
  void ReadSomething(unsigned number, const std::string& user);

  EventCapture events_;
  AccountManagerImpl service_;
  std::mutex mutex_;
  std::map<std::string, Session> sessions_;
  std::vector<std::string> session_ids_;
  std::atomic<bool> reset_over_{false};
  std::atomic<bool> stop_{false};
  std::atomic<long> steps_{0};
};

void StressTest::ReadSomething(unsigned number, const std::string& user) {
  std::string uuid, s[9];
  std::vector<std::string> list;
  int lifetime = 0;
  service_.GetUserUUIDFromUserID(user, &uuid);
  service_.GetUserInfoByType(uuid, 100 + static_cast<int>(number % 9), &s[0]);
  service_.GetUserInformation(uuid, &s[0], &s[1], &s[2], &s[3], &s[4], &s[5], &s[6], &s[7], &s[8]);
  service_.GetAllUsersUUID(&list);
  service_.GetAllFriendsUUID(uuid, &list);
  service_.GetFriendInformation(list.back(), &s[0], &s[1], &s[2], &s[3], &s[4], &s[5]);
  service_.GetFriendUUIDFromFriendIDAndFriendPeerID(uuid, "f", "p", &s[0]);
  service_.GetNTSServerInfoAndPeerID(&s[0], &s[1], &s[2], &s[3], &s[4], &s[5]);
  EXPECT_EQ(service_.GetNetworkSettingStatus(), 1);
  service_.GetSessionInfo(AnySession(number), &s[0]);
  service_.CheckSessionValidation(AnySession(number));
  service_.ResetCountForSessionMaintenance(AnySession(number));
  service_.GetSessionLifetime(&lifetime);
  service_.CreateUserRequest(s[0], s[1]);
  service_.GetUserCreationRequest(s[0], s[1]);
  service_.RemoveUserRequest(s[0], s[1]);
  service_.SearchUser(s[0], s[1]);
}

void StressTest::Step(unsigned number, const std::string& own, bool* removed) {
  const std::string user = StableUser(number >> 8);
  const bool before = !reset_over_;
  std::string uuid, session, code;
  bool flag = false;
  switch (number % 12) {
    case 0:
      if (service_.CreateUser(own, cloud_->IssueCode(own), &uuid) == 1) *removed = false;
      break;
    case 1:
      if (service_.RemoveUser(own, own) == 1) *removed = true;
      break;
    case 2:
      if (service_.SignIn(user, cloud_->IssueCode(user), &uuid, &session, &flag) == 1) {
        Opened(session, before);
      }
      break;
    case 3:
    case 4:
      if (service_.SignInAlt(number & 64 ? user : "qornsystem", kSystemAccountPassword, &uuid,
                             &session) == 1) {
        Opened(session, before);
      }
      break;
    case 5:
    case 6:
      SignOut(AnySession(number >> 4));
      break;
    case 7:
      service_.GetUserUUIDFromUserID(user, &uuid);
      service_.SetUserInfoByType(uuid, number & 64 ? 201 : 300, "Name");
      service_.SetSessionLifetime(2 + static_cast<int>(number >> 4 & 3));
      break;
    case 8:
      service_.RefreshAccessToken(user);
      break;
    case 9:
      service_.GetUserUUIDFromUserID(user, &uuid);
      service_.AddFriendCandidate(uuid, "f@x", cloud_->PeerId(kGatewayAddress), &code);
      service_.AddFriendRequest("f@x", code, cloud_->IssueCode("f@x"), "m", "d", "DDEEFF", &uuid);
      break;
    case 10:
      service_.GetUserUUIDFromUserID(user, &uuid);
      service_.RemoveFriendRequest(uuid, "f@x", cloud_->PeerId(kGatewayAddress));
      service_.AddFriendToDB(uuid, "g@x", "g", "d", "a", "p", &code);
      service_.ParseAccountMessage(
          "{\"module_name\":\"account\",\"api_name\":\"RemoveFriend\",\"param_list\":[{"
          "\"user_id\":\"" +
          user + "\",\"friend_id\":\"g@x\",\"friend_qor_device_peer_id\":\"p\"}]}");
      service_.RemoveFriendFromDB(uuid, "g@x", "p");
      break;
    default:
      ReadSomething(number >> 4, user);
  }
  ++steps_;
}

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
  MakeStableUsers();

  std::vector<std::thread> threads;
  bool removed[kThreads] = {};
  for (unsigned t = 0; t < kThreads; ++t) {
    threads.emplace_back([this, t, &removed] {
      std::mt19937 random(t);
      const std::string own = "own" + std::to_string(t) + "@x";
      while (!stop_) Step(static_cast<unsigned>(random()), own, &removed[t]);
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
  reset_over_ = true;
  MakeStableUsers();
  std::this_thread::sleep_for(half);
  stop_ = true;
  for (std::thread& thread : threads) thread.join();
  clock.WaitForSleepers(1);

  for (const std::string& event : events_.Take()) {
    const bool sign_out = event[0] == '8';
    if (sign_out) ++sessions_[event.substr(event.rfind('|') + 1)].events;
  }
  int twice = 0;
  for (const auto& [id, session] : sessions_) {
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
  for (unsigned t = 0; t < kThreads; ++t) {
    const std::string own = "own" + std::to_string(t) + "@x";
    if (removed[t]) {
      EXPECT_EQ(Sql("SELECT count(*) FROM Users WHERE userId='" + own + "'").at(0), "0");
    }
  }
  EXPECT_TRUE(service_.Shutdown());
  std::printf("%ld steps, %zu sessions, %d ended by sign-out and tick together\n", steps_.load(),
              sessions_.size(), twice);
  log_.Take();
}

}  // namespace
}  // namespace account
