// The service on the bus and the client library, each through the other.
#include "gateway/service/bus_service.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <latch>
#include <mutex>

#include "bus/connection.h"
#include "bus/names.h"
#include "client/include/qorn_client.h"
#include "gateway/operations/event_listener.h"
#include "gateway/operations/operations.h"
#include "gateway/output/text.h"
#include "gateway/service/authority.h"
#include "gateway/tests/fake_account_manager.h"
#include "gateway/tests/private_bus.h"

namespace gateway {
namespace {

using Texts = std::vector<std::string>;
using testing::HasSubstr;

constexpr int kPlenty = 1'000'000;

class Accounts : public FakeAccountManager {
 public:
  AccountResult SignIn(Text a, Text b, Out x, Out y, bool* failed) override {
    if (stalled != nullptr) {
      arrived->count_down();
      stalled->wait();
    }
    const std::lock_guard<std::mutex> hold(mutex_);
    return FakeAccountManager::SignIn(a, b, x, y, failed);
  }
  AccountResult GetAllUsersUUID(List x) override {
    FakeAccountManager::GetAllUsersUUID(x);
    while (static_cast<int>(x->size()) < users) x->push_back("u" + std::to_string(x->size()));
    return result;
  }
  // The properties read it whenever they like.
  int GetNetworkSettingStatus() override { return 1; }
  AccountResult SetSessionLifetime(int minutes) override { return lifetime = minutes, 1; }
  AccountResult GetSessionLifetime(int* minutes) override { return *minutes = lifetime, 1; }

  std::latch* arrived = nullptr;
  std::latch* stalled = nullptr;
  int users = 2;
  std::atomic<int> lifetime{30};

 private:
  std::mutex mutex_;
};

class BusServiceTest : public testing::Test {
 protected:
  void Start(GuardLimits limits = {kPlenty, kPlenty, kPlenty, kPlenty, kPlenty}) {
    std::string error;
    service_ = BusService::Start({.address = bus_.address(), .limits = limits},
                                 {.accounts = &accounts_,
                                  .audit = &audit_,
                                  .seen_ids = &seen_ids_,
                                  .flush_events = [] {},
                                  .report = [this](const std::string& line) { Report(line); }},
                                 &error);
    ASSERT_NE(service_, nullptr) << error;
    client_ = qorn::Client::Connect({.address = bus_.address()}, &error);
    ASSERT_NE(client_, nullptr) << error;
    raw_ = bus::Connect(bus_.address(), &error);
  }

  // The error's name and text; "" for none.
  std::string CallRaw(const char* group, const char* method, const char* types, const char* text,
                      const char* second = nullptr) {
    sd_bus_error error{};
    sd_bus_call_method(raw_.get(), bus::kService, bus::kObject,
                       (std::string(bus::kInterfacePrefix) + group).c_str(), method, &error,
                       nullptr, types, text, second);
    const std::string found =
        error.name == nullptr ? "" : std::string(error.name) + ": " + error.message;
    sd_bus_error_free(&error);
    return found;
  }

  void Report(const std::string& line) {
    const std::lock_guard<std::mutex> hold(mutex_);
    reports_.push_back(line);
    reported_.notify_all();
  }
  void WaitForReports(size_t count) {
    std::unique_lock<std::mutex> hold(mutex_);
    reported_.wait(hold, [&] { return reports_.size() >= count; });
  }

  PrivateBus bus_;
  Accounts accounts_;
  Audit audit_;
  SeenIds seen_ids_;
  std::mutex mutex_;
  std::condition_variable reported_;
  Texts reports_;
  std::unique_ptr<BusService> service_;
  std::unique_ptr<qorn::Client> client_;
  bus::ConnectionPtr raw_;
};

// Each operation comes to the component as it was called and its answer comes back whole.
TEST_F(BusServiceTest, OperationsAreTheSameAsInside) {
  Start();
  for (const Operation& operation : Operations()) {
    SCOPED_TRACE(operation.name);
    Texts words;
    for (const Field::Shape shape : operation.argument_shapes) {
      words.push_back(shape == Field::Shape::kNumber ? "1" : "w" + std::to_string(words.size()));
    }
    if (operation.name == std::string("CheckSessionValidation")) words = {"2"};
    Answer inside, outside;
    std::string error;
    accounts_.calls.clear();
    ASSERT_TRUE(operation.Call(accounts_, words, &inside, &error));
    ASSERT_TRUE(operation.Call(*client_->accounts(), words, &outside, &error));
    EXPECT_EQ(outside.code, inside.code);
    // Those that note nothing are called inside as often as here.
    if (!accounts_.calls.empty()) {
      ASSERT_GE(accounts_.calls.size(), 2u);
      EXPECT_EQ(accounts_.calls[1], accounts_.calls[0]);
    }
    ASSERT_EQ(outside.outputs.size(), inside.outputs.size());
    for (size_t i = 0; i < inside.outputs.size(); ++i) {
      const bool token = inside.outputs[i].name.ends_with("_token");
      EXPECT_EQ(outside.outputs[i].values, token ? Texts{"o1"} : inside.outputs[i].values);
    }
  }
}

TEST_F(BusServiceTest, FailuresAreErrorsWithoutOutputs) {
  Start();
  for (int code = 2; code <= 19; ++code) {
    accounts_.result = code;
    std::string uuid = "untouched", session = "untouched";
    bool unreachable = false;
    EXPECT_EQ(client_->accounts()->SignIn("ann", "code", &uuid, &session, &unreachable), code);
    EXPECT_EQ(uuid + session, "untoucheduntouched");
    EXPECT_EQ(unreachable, code == kAccountZepServerFailure);
    EXPECT_EQ(qorn::Client::LastError(), "");
  }
  EXPECT_EQ(CallRaw("Sessions", "SignOut", "s", "x"),
            "org.qorn.Accounts1.Error.Failure: Failure for certain reason");
}

TEST_F(BusServiceTest, RefusesWhatGoesIntoNoOperation) {
  Start();
  const std::string longest(bus::kMaxArgumentBytes, 'x');
  std::string uuid;
  EXPECT_EQ(client_->accounts()->GetUserUUIDFromUserID(longest, &uuid), 1);
  const std::pair<std::string, const char*> cases[] = {
      {longest + "x", "longer than 64 KiB"},
      {"a\nb", "user_id holds a control character"},
      {"a\xc2\x85", "user_id holds a control character"},
      {"\xff", "not UTF-8"},
      {std::string("a\0b", 3), "zero byte"}};
  for (const auto& [text, error] : cases) {
    EXPECT_EQ(client_->accounts()->GetUserUUIDFromUserID(text, &uuid), kAccountFailure);
    EXPECT_THAT(qorn::Client::LastError(), HasSubstr(error));
  }
  EXPECT_THAT(CallRaw("Sessions", "SignOut", "o", "/x"), HasSubstr("InvalidArgs"));
  EXPECT_THAT(CallRaw("Sessions", "SignOut", "", ""), HasSubstr("InvalidArgs"));
  EXPECT_THAT(CallRaw("Users", "SignOut", "s", "x"), HasSubstr("UnknownMethod"));
  EXPECT_EQ(accounts_.calls.size(), 1u);
}

TEST_F(BusServiceTest, TextsThatAreNoUtf8AndLargeListsArrive) {
  Start();
  accounts_.output_text = std::string("\xff\xe2\x82\xac\xed\xa0\x80\0", 8);
  std::string uuid;
  EXPECT_EQ(client_->accounts()->GetUserUUIDFromUserID("ann", &uuid), 1);
  const std::string bad = "\xef\xbf\xbd";
  EXPECT_EQ(uuid, bad + "\xe2\x82\xac" + bad + bad + bad + bad + "1");
  // More than twelve MB, far more than a socket takes at once.
  accounts_.output_text.assign(90, 'x');
  accounts_.users = 20'000;
  qorn::ClientRows rows;
  EXPECT_EQ(client_->ListUsers(&rows), 1) << qorn::Client::LastError();
  ASSERT_EQ(rows.size(), 20'000u);
  EXPECT_EQ(rows[19'999][0].second, "u19999");
  EXPECT_EQ(rows[0].size(), 8u);  // No tokens.
}

TEST_F(BusServiceTest, SignalsTellNoCodeAndNoSession) {
  Start();
  EventListener listener([this](const SeenEvent& event) { service_->NoteEvent(event); });
  std::promise<qorn::ClientEvent> promise;
  client_->AddListener([&](const qorn::ClientEvent& event) { promise.set_value(event); });
  Publish(kEventAccountSignIn, {"uuid", "ann", "code", "session"});
  const qorn::ClientEvent event = promise.get_future().get();
  EXPECT_EQ(event.name, "kEventAccountSignIn");
  EXPECT_THAT(event.fields, testing::ElementsAre(testing::Pair("user_uuid", "uuid"),
                                                 testing::Pair("user_id", "ann")));
}

// Everybody hears of a lifetime that a caller has set.
TEST_F(BusServiceTest, PropertiesTellOfTheirChanges) {
  Start();
  std::promise<std::string> promise;
  const auto on_change = [](sd_bus_message* signal, void* told, sd_bus_error*) {
    const char* interface = nullptr;
    const char* name = nullptr;
    sd_bus_message_read(signal, "s", &interface);
    sd_bus_message_enter_container(signal, 'a', "{sv}");
    sd_bus_message_enter_container(signal, 'e', "sv");
    sd_bus_message_read(signal, "s", &name);
    static_cast<std::promise<std::string>*>(told)->set_value(name);
    return 0;
  };
  sd_bus_match_signal(raw_.get(), nullptr, bus::kService, bus::kObject,
                      "org.freedesktop.DBus.Properties", "PropertiesChanged", on_change, &promise);
  client_->accounts()->SetSessionLifetime(5);
  auto future = promise.get_future();
  while (future.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
    if (sd_bus_process(raw_.get(), nullptr) == 0) sd_bus_wait(raw_.get(), UINT64_MAX);
  }
  EXPECT_EQ(future.get(), "SessionLifetime");
  std::string version;
  EXPECT_EQ(client_->GetVersion(&version), 1);
  EXPECT_NE(version, "");
}

TEST_F(BusServiceTest, AStalledCloudHoldsUpNobodyAndAStopWaitsForIt) {
  Start();
  std::latch arrived(4), stalled(1);
  accounts_.arrived = &arrived;
  accounts_.stalled = &stalled;
  std::vector<std::future<AccountResult>> sign_ins;
  for (int i = 0; i < 4; ++i) {
    sign_ins.push_back(std::async(std::launch::async, [this] {
      std::string uuid, session;
      bool unreachable = false;
      return client_->accounts()->SignIn("ann", "code", &uuid, &session, &unreachable);
    }));
  }
  arrived.wait();
  std::string uuid;
  EXPECT_EQ(client_->accounts()->GetUserUUIDFromUserID("ann", &uuid), 1);
  auto stop = std::async(std::launch::async, [this] { service_->Stop(); });
  std::string refusal;
  while ((refusal = CallRaw("Sessions", "SignOut", "s", "x")).empty()) continue;
  EXPECT_THAT(refusal, HasSubstr(bus::kStopping));
  stalled.count_down();
  for (auto& sign_in : sign_ins) EXPECT_EQ(sign_in.get(), 1);
  stop.get();
}

// Sign-ins, since their allowance does not come back while the test runs.
TEST_F(BusServiceTest, RefusesWhoAsksTooMuchAndSaysForHowLong) {
  Start({.calls_per_second = kPlenty, .burst = kPlenty, .sign_ins_per_minute = 1});
  const int allowed = getuid() == 0 ? 10 : 1;
  std::string refusal;
  int calls = 0;
  while ((refusal = CallRaw("Sessions", "SignInAlt", "ss", "x", "y")).empty()) ++calls;
  EXPECT_EQ(calls, allowed);
  EXPECT_THAT(refusal, testing::MatchesRegex(std::string(bus::kLimitsExceeded) +
                                             ": too many calls; try again in [0-9]+ seconds?"));
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

TEST_F(BusServiceTest, TheBusMayGoAndComeBack) {
  Start();
  bus_.Stop();
  WaitForReports(1);
  EXPECT_THAT(reports_[0], HasSubstr("the bus is gone"));
  std::string uuid;
  EXPECT_EQ(client_->accounts()->GetUserUUIDFromUserID("ann", &uuid), kAccountFailure);
  EXPECT_NE(qorn::Client::LastError(), "");
  bus_.Start();
  WaitForReports(2);
  EXPECT_EQ(client_->accounts()->GetUserUUIDFromUserID("ann", &uuid), 1);
}

TEST_F(BusServiceTest, ATakenNameAndAMissingBusAreOneLine) {
  Start();
  std::string error;
  const BusService::Parts parts{&accounts_, &audit_, &seen_ids_, [] {}, {}};
  EXPECT_EQ(BusService::Start({.address = bus_.address()}, parts, &error), nullptr);
  EXPECT_THAT(error, HasSubstr("another program has it"));
  EXPECT_EQ(BusService::Start({.address = "unix:path=/nowhere"}, parts, &error), nullptr);
  EXPECT_EQ(error, "the bus unix:path=/nowhere cannot be reached: No such file or directory");
}

// Polkit as a stranger's call meets it; it grants sign-ins, and looks when it may ask.
class AuthorityTest : public testing::Test {
 protected:
  static int OnQuestion(sd_bus_message* question, void*, sd_bus_error*) {
    const char* action = nullptr;
    uint32_t flags = 0;
    sd_bus_message_skip(question, "(sa{sv})");
    sd_bus_message_read(question, "s", &action);
    sd_bus_message_skip(question, "a{ss}");
    sd_bus_message_read(question, "u", &flags);
    const std::string asked = action;
    const bool granted =
        asked == "org.qorn.accounts1.sign-in" || (asked == "org.qorn.accounts1.look" && flags == 1);
    return sd_bus_reply_method_return(question, "(bba{ss})", granted, 0, 0);
  }

  bool Ask(const Caller& caller, Right right, bool interactive) {
    std::optional<bool> answer;
    Authorise(gateway_.get(), &pending_, caller, right, interactive,
              [&](bool granted) { answer = granted; });
    while (!answer) {
      while (sd_bus_process(polkit_.get(), nullptr) > 0) continue;
      while (sd_bus_process(gateway_.get(), nullptr) > 0) continue;
      if (!answer) sd_bus_wait(gateway_.get(), 1000);
    }
    return *answer;
  }

  PrivateBus bus_;
  bus::PendingCalls pending_;
  std::string error_;
  bus::ConnectionPtr gateway_ = bus::Connect(bus_.address(), &error_);
  bus::ConnectionPtr polkit_ = bus::Connect(bus_.address(), &error_);
};

TEST_F(AuthorityTest, StrangersHaveWhatPolkitGrants) {
  const Caller stranger{
      .connection = ":1.7", .user = 12345, .user_name = "stranger", .program = ""};
  Caller member = stranger;
  member.is_member = true;
  EXPECT_FALSE(Ask(stranger, Right::kSignIn, false)) << "without polkit";
  static const sd_bus_vtable kPolkit[] = {
      SD_BUS_VTABLE_START(0),
      SD_BUS_METHOD("CheckAuthorization", "(sa{sv})sa{ss}us", "(bba{ss})", &OnQuestion,
                    SD_BUS_VTABLE_UNPRIVILEGED),
      SD_BUS_VTABLE_END};
  sd_bus_add_object_vtable(polkit_.get(), nullptr, "/org/freedesktop/PolicyKit1/Authority",
                           "org.freedesktop.PolicyKit1.Authority", kPolkit, nullptr);
  ASSERT_GE(sd_bus_request_name(polkit_.get(), "org.freedesktop.PolicyKit1", 0), 0);
  EXPECT_TRUE(Ask(stranger, Right::kSignIn, false));
  EXPECT_FALSE(Ask(stranger, Right::kLook, false));
  EXPECT_TRUE(Ask(stranger, Right::kLook, true));
  EXPECT_FALSE(Ask(stranger, Right::kReset, true));
  EXPECT_TRUE(Ask(member, Right::kLook, false));
  EXPECT_FALSE(Ask(member, Right::kManage, false));
}

}  // namespace
}  // namespace gateway
