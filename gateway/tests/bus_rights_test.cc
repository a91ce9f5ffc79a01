// Who may ask for what on the bus, and how much.
#include "gateway/service/methods.h"
#include "gateway/service/properties.h"
#include "gateway/tests/bus_service_fixture.h"

namespace gateway {
namespace {

using testing::StartsWith;

// A stranger without polkit has none.
TEST_F(BusServiceTest, NothingIsWithoutARight) {
  if (getuid() != 0) GTEST_SKIP() << "only root can be other users";
  Start();
  raw_ = ConnectAsStranger();
  const std::string prefix = bus::kInterfacePrefix;
  for (const Method& method : Methods()) {
    std::string types;
    for (const Method::Value& value : method.takes) types += value.signature;
    EXPECT_THAT(Call(prefix + method.group, method.name.c_str(), types, Texts(types.size())),
                StartsWith(bus::kAccessDenied))
        << method.name;
  }
  for (const Property& property : Properties::All()) {
    EXPECT_THAT(Call("org.freedesktop.DBus.Properties", "Get", "ss",
                     {prefix + property.group, property.name}),
                StartsWith(bus::kAccessDenied))
        << property.name;
  }
}

TEST_F(BusServiceTest, OneUsersStalledCallsLeaveThreadsToOthers) {
  if (getuid() != 0) GTEST_SKIP() << "only root can be other users";
  group_ = getgrgid(kStranger)->gr_name;
  Start();
  std::latch arrived(6), stalled(1);
  accounts_.arrived = &arrived;
  accounts_.stalled = &stalled;
  for (int i = 0; i < 8; ++i) {
    sd_bus_call_method_async(raw_.get(), nullptr, bus::kService, bus::kObject,
                             "org.qorn.Accounts1.Sessions", "SignIn", nullptr, nullptr, "ss",
                             "slow", "code");
  }
  sd_bus_flush(raw_.get());
  arrived.wait();
  raw_ = ConnectAsStranger();
  EXPECT_EQ(Call(kSessions, "SignIn", "ss", {"quick", "code"}), "");
  stalled.count_down();
  service_->Stop();
}

// Polkit asks a person only for callers who allow it, who may take a minute to type a password.
TEST_F(BusServiceTest, AStopDoesNotWaitForAPerson) {
  if (getuid() != 0) GTEST_SKIP() << "only root can be other users";
  std::string error;
  const bus::ConnectionPtr polkit = bus::Connect(bus_.address(), &error);
  ASSERT_GE(sd_bus_request_name(polkit.get(), "org.freedesktop.PolicyKit1", 0), 0);
  Start();
  const bus::ConnectionPtr stranger = ConnectAsStranger();
  Texts refusals;
  const auto on_reply = [](sd_bus_message* reply, void* told, sd_bus_error*) {
    static_cast<Texts*>(told)->emplace_back(sd_bus_message_get_error(reply)->name);
    return 0;
  };
  for (const uint32_t interactive : {0u, 1u}) {
    sd_bus_message* made = nullptr;
    sd_bus_message_new_method_call(stranger.get(), &made, bus::kService, bus::kObject,
                                   "org.qorn.Accounts1.Users", "ListUsers");
    const bus::MessagePtr call(made);
    sd_bus_message_set_allow_interactive_authorization(made, static_cast<int>(interactive));
    sd_bus_call_async(stranger.get(), nullptr, made, on_reply, &refusals, 0);
    sd_bus_flush(stranger.get());
    bus::MessagePtr question;
    while (question == nullptr ||
           sd_bus_message_is_method_call(question.get(), nullptr, "CheckAuthorization") <= 0) {
      sd_bus_message* next = nullptr;
      if (sd_bus_process(polkit.get(), &next) == 0) sd_bus_wait(polkit.get(), UINT64_MAX);
      if (next != nullptr) question.reset(next);
    }
    uint32_t flags = 2;
    sd_bus_message_skip(question.get(), "(sa{sv})sa{ss}");
    sd_bus_message_read(question.get(), "u", &flags);
    EXPECT_EQ(flags, interactive);
  }
  service_->Stop();
  while (refusals.size() < 2) {
    if (sd_bus_process(stranger.get(), nullptr) == 0) sd_bus_wait(stranger.get(), UINT64_MAX);
  }
  EXPECT_EQ(refusals, Texts(2, bus::kStopping));
}

// Sign-ins, since their allowance does not come back while the test runs.
TEST_F(BusServiceTest, RefusesWhoAsksTooMuchAndSaysForHowLong) {
  Start({.calls_per_second = kPlenty, .burst = kPlenty, .sign_ins_per_minute = 1});
  for (int i = getuid() == 0 ? 10 : 1; i > 0; --i) {
    EXPECT_EQ(Call(kSessions, "SignInAlt", "ss", {"x", "y"}), "");
  }
  const auto begin = Guard::Clock::now();
  EXPECT_THAT(Call(kSessions, "SignInAlt", "ss", {"x", "y"}),
              testing::MatchesRegex(std::string(bus::kLimitsExceeded) +
                                    ": too many calls; try again in [0-9]+ seconds?"));
  // The refusal was held back.
  EXPECT_GE(Guard::Clock::now() - begin, std::chrono::milliseconds(250));
  EXPECT_EQ(Refusals(), std::vector(1, Refusal::kTooManyCalls));
}

TEST_F(BusServiceTest, TheClientWaitsAsLongAsTheGuardSays) {
  Start({.calls_per_second = 1, .burst = 1});
  std::string error;
  Texts waits;
  const auto client =
      qorn::Client::Connect({.address = bus_.address(),
                             .on_wait = [&](const std::string& line) { waits.push_back(line); }},
                            &error);
  std::string uuid;
  while (waits.empty()) ASSERT_EQ(client->accounts()->GetUserUUIDFromUserID("ann", &uuid), 1);
  EXPECT_THAT(waits, testing::ElementsAre("the gateway is asked too much; waiting for 1 second"));
}

TEST(GuardTest, EachUserHasAnAllowanceAndRootTenTimesAsMuch) {
  Guard guard({.calls_per_second = 2,
               .burst = 3,
               .calls_in_flight = 2,
               .all_calls_in_flight = 3,
               .sign_ins_per_minute = 1});
  const Guard::Clock::time_point start{};
  const auto at = [&](int seconds) { return start + std::chrono::seconds(seconds); };
  const auto call = [&](uid_t user, bool signs_in, int seconds) {
    const auto wait = guard.Enter(user, signs_in, at(seconds));
    if (!wait) guard.Leave(user);
    return wait.value_or(0);
  };
  for (int i = 0; i < 3; ++i) EXPECT_EQ(call(7, false, 0), 0);
  EXPECT_EQ(call(7, false, 0), 1);  // The burst is over,
  EXPECT_EQ(call(8, false, 0), 0);  // for this user.
  EXPECT_EQ(call(7, false, 1), 0);
  EXPECT_EQ(call(9, true, 0), 0);
  EXPECT_EQ(call(9, true, 1), 59);
  EXPECT_EQ(call(9, true, 60), 0);
  for (int i = 0; i < 30; ++i) EXPECT_EQ(call(0, false, 0), 0);
  EXPECT_EQ(call(0, false, 0), 1);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(guard.Enter(5, false, at(9)), std::nullopt);
  EXPECT_EQ(guard.Enter(5, false, at(9)), 1);  // Two of its calls run.
  EXPECT_EQ(guard.Enter(6, false, at(9)), std::nullopt);
  EXPECT_EQ(guard.Enter(6, false, at(9)), 1);  // Three of all users.
}

}  // namespace
}  // namespace gateway
