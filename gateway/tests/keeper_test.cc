// The keeper on a test's clock, with accounts that answer from memory.
#include "gateway/keeper/keeper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "gateway/keeper/state_file.h"
#include "gateway/keeper/transfer_error.h"
#include "gateway/tests/fake_account_manager.h"

namespace gateway {
namespace {

using keeper::kDay;
using keeper::kHour;
using keeper::kMinute;
using testing::ElementsAre;
using testing::IsEmpty;

// How the cloud and the disk treat a user's refreshes.
enum class Fate { kGood, kRefused, kLostAnswer, kRenewedElsewhere, kFullDisk, kNoConnection };

class Accounts : public FakeAccountManager {
 public:
  struct Stored {
    Fate fate = Fate::kGood;
    int token = 1;
    std::vector<int64_t> refreshes = {};  // when
  };

  AccountResult GetAllUsersUUID(List uuids) override {
    if (!readable) return kAccountDbExecuteFailure;
    *uuids = {"qornsystem"};
    for (const auto& [id, user] : users) uuids->push_back(id);
    return kAccountSuccess;
  }
  AccountResult GetUserInfoByType(Text uuid, int type, Out value) override {
    const bool is_token = type == kUserInfoGetRefreshToken;
    *value = !is_token ? uuid : users[uuid].token == 0 ? "" : std::to_string(users[uuid].token);
    return kAccountSuccess;
  }
  AccountResult RefreshAccessToken(Text id) override {
    Stored& user = users.at(id);
    user.refreshes.push_back(now);
    if (user.fate == Fate::kNoConnection) NoteTransferError("[x] curl error code = 7\n");
    if (user.fate == Fate::kLostAnswer) NoteTransferError("curl error code = 56\n");
    if (user.fate == Fate::kGood || user.fate == Fate::kRenewedElsewhere) ++user.token;
    return user.fate == Fate::kGood || user.fate == Fate::kFullDisk ? kAccountSuccess
                                                                    : kAccountFailure;
  }

  bool readable = true;
  std::map<std::string, Stored> users;
  int64_t now = 1000;
};

class KeeperTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string folder = testing::TempDir() + "keeper-XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    folder_ = folder;
    Restart();
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  void Restart() {
    keeper_ = std::make_unique<Keeper>(
        Keeper::Options{.hours = 24, .state_file = File(), .device_address = "device"},
        Keeper::Parts{.accounts = &accounts_,
                      .has_space = [] { return true; },
                      .server_answers = [](const std::atomic<bool>&) { return true; },
                      .on_refresh = [](const keeper::User&, int, const char*) {},
                      .on_sign_in_needed =
                          [this](const keeper::User& user, bool needed) {
                            changes_.push_back((needed ? "+" : "-") + user.id);
                          },
                      .report = [](const std::string& line) { ADD_FAILURE() << line; },
                      .random = [this] { return random_; },
                      .now = [this] { return accounts_.now; },
                      .wall_now = [this] { return accounts_.now + wall_offset_; }});
  }
  void RunFor(int64_t time) {
    const int64_t end = accounts_.now + time;
    for (int64_t next = keeper_->Step(); next <= end; next = keeper_->Step()) {
      accounts_.now = std::max(next, accounts_.now);
    }
    accounts_.now = end;
  }
  void SignIn(const std::string& id) {
    keeper_->NoteEvent({kEventAccountSignIn, "", {{"user_uuid", {id}}}});
  }
  // The times between the user's refreshes.
  std::vector<int64_t> Pauses(const std::string& id) {
    const std::vector<int64_t>& times = accounts_.users[id].refreshes;
    std::vector<int64_t> pauses;
    for (size_t i = 1; i < times.size(); ++i) pauses.push_back(times[i] - times[i - 1]);
    return pauses;
  }
  std::string File() const { return folder_ + "/keeper.json"; }

  std::string folder_;
  Accounts accounts_;
  double random_ = 0.5;
  int64_t wall_offset_ = 2'000'000'000;
  std::vector<std::string> changes_;
  std::unique_ptr<Keeper> keeper_;
};

TEST_F(KeeperTest, EachFateHasItsPauses) {
  struct Case {
    Fate fate;
    std::vector<int64_t> pauses;
    bool sign_in_needed;
  };
  const Case cases[] = {
      {Fate::kGood, {kDay, kDay}, false},
      {Fate::kRenewedElsewhere, {kDay, kDay}, false},
      {Fate::kRefused, {10, kDay, kDay}, true},
      {Fate::kLostAnswer, {10, kDay, kDay}, true},
      {Fate::kFullDisk, {10, kDay, kDay}, true},
      {Fate::kNoConnection,
       {60, 120, 240, 480, 960, 1920, 3840, 7680, 15360, 21600, 21600, 21600, 21600, 21600, 21600},
       false}};
  for (const Case& test : cases) {
    SCOPED_TRACE(static_cast<int>(test.fate));
    std::filesystem::remove(File());
    accounts_.users = {{"ann", {.fate = test.fate}}, {"none", {.token = 0}}};
    Restart();
    RunFor(kHour + 2 * kDay);
    EXPECT_EQ(Pauses("ann"), test.pauses);
    EXPECT_EQ(keeper_->SignInNeeded().size(), test.sign_in_needed ? 1 : 0);
    EXPECT_THAT(accounts_.users["none"].refreshes, IsEmpty());
  }
}

TEST_F(KeeperTest, EachPauseIsUpToAFifthShorterOrLonger) {
  for (random_ = 0; random_ <= 1; random_ += 1) {
    accounts_.users["ann"] = {.fate = Fate::kNoConnection};
    Restart();
    RunFor(kHour + 10 * kMinute);
    EXPECT_EQ(Pauses("ann").at(0), random_ == 0 ? 48 : 72);
    std::filesystem::remove(File());
  }
}

TEST_F(KeeperTest, WhoIsRefusedWhileOthersAreNotMustSignInUntilTheyDo) {
  accounts_.users = {{"ann", {}}, {"bob", {.fate = Fate::kRefused}}, {"eve", {}}};
  RunFor(kHour + kMinute);
  EXPECT_THAT(changes_, ElementsAre("+bob"));
  // The flag outlives the program.
  Restart();
  RunFor(0);
  EXPECT_THAT(changes_, ElementsAre("+bob", "+bob"));
  accounts_.users["bob"] = {.token = 7};
  SignIn("bob");
  RunFor(0);
  EXPECT_THAT(changes_, ElementsAre("+bob", "+bob", "-bob"));
  EXPECT_THAT(accounts_.users["bob"].refreshes, IsEmpty());
  // So does a token that changes without an event, and a user who is gone.
  for (const bool gone : {false, true}) {
    accounts_.users["bob"].fate = Fate::kRefused;
    RunFor(3 * kDay);
    EXPECT_EQ(changes_.back(), "+bob");
    accounts_.readable = false;
    RunFor(2 * kHour);
    EXPECT_EQ(changes_.back(), "+bob");
    accounts_.readable = true;
    gone ? accounts_.users.erase("bob") : (++accounts_.users["bob"].token, size_t{1});
    RunFor(kHour);
    EXPECT_EQ(changes_.back(), "-bob");
  }
}

TEST_F(KeeperTest, StateIsKeptOnceADayAndIgnoredWhenUnknown) {
  accounts_.users = {{"ann", {.fate = Fate::kRefused}}};
  RunFor(kHour);
  struct stat first {};
  ASSERT_EQ(stat(File().c_str(), &first), 0);
  EXPECT_EQ(first.st_mode & 0777, 0600u);
  SignIn("ann");
  RunFor(22 * kHour);
  struct stat second {};
  ASSERT_EQ(stat(File().c_str(), &second), 0);
  EXPECT_EQ(second.st_ino, first.st_ino);
  RunFor(4 * kDay);
  std::ifstream file(File());
  const std::string state{std::istreambuf_iterator<char>(file), {}};
  const int64_t wall = accounts_.now + wall_offset_;
  EXPECT_TRUE(DecodeKeeperState(state, 5, wall).at("ann").sign_in_needed);
  EXPECT_LE(DecodeKeeperState(state, 5, wall).at("ann").tried, 5);
  EXPECT_THAT(DecodeKeeperState(state, 5, wall - kDay), IsEmpty());  // The clock went back.
  std::string newer = state;
  newer.replace(newer.find(": 1"), 3, ": 2");
  for (const std::string& text : {newer, state.substr(0, state.size() / 2), std::string("[]")}) {
    EXPECT_THAT(DecodeKeeperState(text, 5, wall), IsEmpty());
  }
}

TEST(Schedule, SpreadsAThousandGatewaysOverAnHour) {
  std::map<int64_t, int> counts;  // by minute
  for (int i = 0; i < 1000; ++i) {
    Schedule schedule(kDay, "02:00:00:00:" + std::to_string(i), [] { return 0.5; });
    schedule.SetUsers({{"uuid", "ann", "hash"}}, 0);
    ++counts[schedule.Next()->first / kMinute];
  }
  EXPECT_LT(counts.rbegin()->first, 60);
  for (const auto& [minute, count] : counts) EXPECT_LE(count, 50);
}

}  // namespace
}  // namespace gateway
