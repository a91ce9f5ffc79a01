// The service on the bus and the client library, each through the other.
#include "gateway/operations/event_listener.h"
#include "gateway/operations/operations.h"
#include "gateway/tests/bus_service_fixture.h"

namespace gateway {
namespace {

using testing::HasSubstr;

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
  EXPECT_EQ(Call(kSessions, "SignOut", "s", {"x"}),
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
  EXPECT_THAT(Call(kSessions, "SignOut", "o", {"/x"}), HasSubstr("InvalidArgs"));
  EXPECT_THAT(Call(kSessions, "SignOut", "", {}), HasSubstr("InvalidArgs"));
  EXPECT_THAT(Call("org.qorn.Accounts1.Users", "SignOut", "s", {"x"}), HasSubstr("UnknownMethod"));
  EXPECT_EQ(accounts_.calls.size(), 1u);
  EXPECT_EQ(Refusals(), std::vector(3, Refusal::kBadArguments));  // The others get no further.
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
  while ((refusal = Call(kSessions, "SignOut", "s", {"x"})).empty()) continue;
  EXPECT_THAT(refusal, HasSubstr(bus::kStopping));
  EXPECT_EQ(Refusals(), std::vector(1, Refusal::kStopping));
  stalled.count_down();
  for (auto& sign_in : sign_ins) EXPECT_EQ(sign_in.get(), 1);
  stop.get();
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

}  // namespace
}  // namespace gateway
