// The worker thread's tick, driven by the platform's replaceable clock.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/test_clock.h"
#include "base/time.h"
#include "core_fw/account/tests/test_support.h"
#include "evt/event_manager.h"

namespace account {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TickTest : public ServiceTest {
 protected:
  void Start() {
    StartService();
    clock_.WaitForSleepers(1);  // The worker has armed its timer.
    log_.Take();
  }

  // Lets the clock pass to the next tick and waits until the worker sleeps again.
  void Tick() {
    clock_.Advance(base::TimeDelta::FromSeconds(60));
    clock_.WaitForSleepers(1);
  }

  std::string Add(const std::string& user_id) {
    std::string session;
    EXPECT_EQ(SessionTable::GetInstance()->AddSession(user_id, &session), 1);
    return session;
  }
  bool Open(const std::string& session) {
    return SessionTable::GetInstance()->HasSession(session) == 1;
  }

  static std::string SignOutEvent(const std::string& session) {
    return "8 qornsystem|qornsystem|" + session;
  }

  base::TestClock clock_;
};

constexpr char kPublished[] = "2 #account#AddAndCheckCount#  kEventAccountSignOut published\n";

TEST_F(TickTest, TheFirstComesAfterSixtySeconds) {
  Start();
  SessionTable::GetInstance()->SetLifetime(1);
  const std::string session = Add("qornsystem");
  clock_.Advance(base::TimeDelta::FromMilliseconds(59999));
  clock_.WaitForSleepers(1);
  EXPECT_TRUE(Open(session));
  clock_.Advance(base::TimeDelta::FromMilliseconds(1));
  clock_.WaitForSleepers(1);
  EXPECT_FALSE(Open(session));
  EXPECT_THAT(events_->Take(), ElementsAre(SignOutEvent(session)));
  EXPECT_THAT(log_.Take(), ElementsAre(kPublished));
}

TEST_F(TickTest, ASessionLivesThirtyTicksUnlessItIsKept) {
  Start();
  const std::string kept = Add("qornsystem");
  const std::string idle = Add("qornsystem");
  for (int i = 0; i < 29; ++i) {
    Tick();
    service_->ResetCountForSessionMaintenance(kept);
  }
  EXPECT_TRUE(Open(idle));
  Tick();
  EXPECT_FALSE(Open(idle));
  EXPECT_TRUE(Open(kept));
  EXPECT_THAT(events_->Take(), ElementsAre(SignOutEvent(idle)));
}

TEST_F(TickTest, SessionsEndInTheOrderOfTheTable) {
  Start();
  const std::string a = Add("qornsystem");
  const std::string b = Add("qornsystem");
  service_->SetSessionLifetime(0);
  Tick();
  EXPECT_THAT(events_->Take(), ElementsAre(SignOutEvent(a), SignOutEvent(b)));
}

TEST_F(TickTest, ASignOutBetweenTheStepsEndsTheTick) {
  Start();
  const std::string a = Add("qornsystem");
  const std::string b = Add("qornsystem");
  const std::string c = Add("qornsystem");
  // With a record behind it that has expired, a session that is gone counts as expired too.
  service_->SetSessionLifetime(0);
  // The line about the first session's end is written before the second one is looked at.
  log_.OnLine([this, b](const std::string& line) {
    if (line == kPublished) SessionTable::GetInstance()->RemoveSession(b);
  });
  Tick();
  EXPECT_THAT(log_.TakeFailures(), ElementsAre(Line(4, "AddAndCheckCount", "Invalid Session ID")));
  EXPECT_TRUE(Open(c));
  EXPECT_THAT(events_->Take(), ElementsAre(SignOutEvent(a)));
  log_.OnLine(nullptr);
  Tick();
  EXPECT_THAT(events_->Take(), ElementsAre(SignOutEvent(c)));
}

TEST_F(TickTest, ARefusedEventEndsTheTickWithTheSessionGone) {
  Start();
  const std::string a = Add("qornsystem");
  const std::string b = Add("qornsystem");
  service_->SetSessionLifetime(1);
  evt::EventManager::GetInstance()->RefuseForTest(kEventAccountSignOut, true);
  Tick();
  EXPECT_THAT(log_.TakeFailures(),
              ElementsAre(Line(4, "AddAndCheckCount", "Publish kEventAccountSignOut failed.")));
  EXPECT_FALSE(Open(a));
  EXPECT_TRUE(Open(b));
  evt::EventManager::GetInstance()->RefuseForTest(kEventAccountSignOut, false);
  EXPECT_THAT(events_->Take(), IsEmpty());
}

TEST_F(TickTest, AUserThatIsGoneEndsTheTickWithTheSessionGone) {
  Start();
  const std::string a = Add("removed@x");
  const std::string b = Add("qornsystem");
  service_->SetSessionLifetime(1);
  Tick();
  EXPECT_THAT(log_.TakeFailures(),
              ElementsAre(Line(4, "AddAndCheckCount",
                               "There is no user who has this user ID in the account DB")));
  EXPECT_FALSE(Open(a));
  EXPECT_TRUE(Open(b));
  EXPECT_THAT(events_->Take(), IsEmpty());
}

TEST_F(TickTest, RetriesTheNetworkSettingUntilItHasIt) {
  config_["account_enable_MIRLO_network_setting"] = "on";
  cloud_->AddGateway(kGatewayAddress);
  devcloud::Fault fault;
  fault.status = 500;
  fault.times = 3;
  cloud_->AddFault(fault);
  Start();
  Tick();
  EXPECT_EQ(service_->GetNetworkSettingStatus(), 0);
  Tick();
  EXPECT_EQ(service_->GetNetworkSettingStatus(), 0);
  Tick();
  EXPECT_EQ(service_->GetNetworkSettingStatus(), 1);
  EXPECT_EQ(cloud_->requests().size(), 5u);
  Tick();
  EXPECT_EQ(cloud_->requests().size(), 5u);
  log_.Take();
}

TEST_F(TickTest, NoneComesAfterShutdown) {
  Start();
  service_->SetSessionLifetime(0);
  Add("qornsystem");
  ASSERT_TRUE(service_->Shutdown());
  log_.Take();
  clock_.Advance(base::TimeDelta::FromSeconds(600));
  EXPECT_THAT(log_.Take(), IsEmpty());
  EXPECT_THAT(events_->Take(), IsEmpty());
  EXPECT_TRUE(service_->Shutdown());
}

}  // namespace
}  // namespace account
