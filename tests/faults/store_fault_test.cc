// Every operation of store_operations.txt on files of which every call fails, in turn.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <future>
#include <sstream>

#include "base/clock.h"
#include "core_fw/account/src/account_manager_impl.h"
#include "core_fw/account/src/account_records.h"
#include "core_fw/account/tests/test_support.h"
#include "gateway/operations.h"
#include "gateway/text.h"
#include "gateway/words.h"
#include "tests/faults/faulty_vfs.h"

namespace faults {
namespace {

using Rows = std::vector<std::string>;

struct Operation {
  std::string name, codes, leaves, before, line;
};

// Its uptime jumps over pauses for a locked database; its time of day stands still. The worker's
// timer never comes.
class JumpingClock : public base::Clock {
 public:
  base::Time Now() const override { return base::Time::UnixEpoch() + kStart; }
  base::TimeDelta Uptime() const override {
    return kStart + base::TimeDelta::FromMicroseconds(jumped_);
  }
  void WaitUntil(base::Lock& lock, base::ConditionVariable& changed,
                 base::TimeDelta deadline) const override EXCLUSIVE_LOCKS_REQUIRED(lock) {
    const int64_t left = (deadline - Uptime()).InMicroseconds();
    if (left > 1'000'000) return changed.Wait(lock);
    jumped_ += left;
  }

 private:
  static constexpr base::TimeDelta kStart =
      base::TimeDelta::FromMicroseconds(1'700'000'000'000'000);
  mutable std::atomic<int64_t> jumped_{0};
};

class StoreFaults : public account::AccountTest {
 public:
  explicit StoreFaults(Operation operation);
  ~StoreFaults() override { base::Clock::Replace(nullptr); }
  void TestBody() override;

 private:
  struct Left {
    int code = 0;
    Rows users, friends;
    std::string outputs;
  };

  gateway::Answer Call(const std::string& line);
  // Starts the service anew under the fault. The code is that of the next call without it.
  gateway::Answer Start(const FileFault& fault, int nth, bool* met);
  // Runs the operation, or leaves it out, on a fresh database. False when no call had the fault.
  bool Run(bool leave_out, const FileFault& fault, int nth, Left* left);
  void CallOn();
  void Judge(const Left& left, const Left& before, const Left& after);
  void UseSystemAccount();
  void ExpectNothingOpen();

  const Operation operation_;
  const std::string baseline_ = folder_ + "/baseline";
  gateway::Variables variables_;
  FaultyVfs vfs_;
  std::unique_ptr<account::AccountManagerImpl> service_;
};

StoreFaults::StoreFaults(Operation operation) : operation_(std::move(operation)) {
  base::Clock::Replace(std::make_shared<JumpingClock>());
  StartRuntime();
  service_ = std::make_unique<account::AccountManagerImpl>();
  service_->Init();
  std::string ann, other;
  service_->CreateUser("ann@x", cloud_->IssueCode("ann@x"), &ann);
  service_->CreateUser("bob@x", cloud_->IssueCode("bob@x"), &other);
  for (const char* id : {"f1", "f2", "f3"}) {
    service_->AddFriendToDB(ann, id, "g", "d", "a", "p", &other);
  }
  service_->Shutdown();
  Sql("WITH RECURSIVE n(i) AS (SELECT 1 UNION SELECT i + 1 FROM n WHERE i < 40) INSERT INTO Users "
      "SELECT 'u' || i, 'i' || i, '', i, hex(zeroblob(120)), '', '', '', '' FROM n;"
      "UPDATE Users SET registeredDate=1, lastSignInDate=1, lastInfoChangedDate=1");
  std::filesystem::rename(database_path(), baseline_);
  variables_.Set("ann", ann);
  variables_.Set("peer", cloud_->PeerId(account::kGatewayAddress));
}

gateway::Answer StoreFaults::Call(const std::string& line) {
  Rows words;
  std::string error;
  EXPECT_TRUE(gateway::SplitWords(line, variables_, &words, &error)) << error;
  gateway::Answer answer;
  const gateway::Operation* const operation = gateway::FindOperation(words.at(0));
  EXPECT_TRUE(operation->call(*service_, {words.begin() + 1, words.end()}, &answer, &error));
  for (const auto& output : answer.outputs) {
    variables_.Set(output.name, gateway::JoinWords(output.values));
  }
  return answer;
}

gateway::Answer StoreFaults::Start(const FileFault& fault, int nth, bool* met) {
  service_->Shutdown();
  if (operation_.leaves == "new") std::filesystem::remove(database_path());
  vfs_.Set(fault, nth, [] {});
  service_->Init();
  *met = vfs_.Clear();
  const gateway::Answer answer = Call("uuid bob@x");
  EXPECT_EQ(answer.code == 3, testing::Value(log_.Take(), testing::Contains(testing::HasSubstr(
                                                              "#CheckAndCreateTable#  Fail to"))));
  service_->Shutdown();
  service_->Init();
  return answer;
}

bool StoreFaults::Run(bool leave_out, const FileFault& fault, int nth, Left* left) {
  std::filesystem::copy_file(baseline_, database_path(),
                             std::filesystem::copy_options::overwrite_existing);
  for (const std::string name : {"ann", "pal", "tim"}) {
    variables_.Set("code_" + name, cloud_->IssueCode(name + "@x"));
  }
  service_ = std::make_unique<account::AccountManagerImpl>();
  service_->Init();
  std::istringstream before(operation_.before);
  for (std::string line; std::getline(before, line, ';');) Call(line);
  EXPECT_EQ(Call("add-friend-to-db $ann last g d a p").code, 1);
  // Another process changed the schema: it has to be read again.
  if (fault.lasting) Sql("CREATE INDEX i ON Users(userId); DROP INDEX i");
  log_.Take();
  bool met = false;
  gateway::Answer answer;
  if (operation_.line == "start") {
    answer = Start(fault, nth, &met);
  } else if (!leave_out) {
    vfs_.Set(fault, nth, [this] { UseSystemAccount(); });
    answer = Call(operation_.line);
    met = vfs_.Clear();
  }
  left->code = answer.code;
  left->outputs.clear();
  for (const auto& output : answer.outputs) left->outputs += gateway::JoinWords(output.values);
  if (answer.code == 4) {
    EXPECT_THAT(log_.Take(), testing::Contains(testing::HasSubstr("Fail to sqlite3_exec(), ")));
  }
  CallOn();
  service_->Shutdown();
  ExpectNothingOpen();
  EXPECT_EQ(Sql("PRAGMA integrity_check"), Rows{"ok"});
  left->users =
      Sql("SELECT userId, userName, userGuid, length(userUuid), length(accessToken), "
          "length(refreshToken), registeredDate, lastSignInDate, lastInfoChangedDate FROM Users "
          "ORDER BY userId, userUuid");
  left->friends =
      Sql("SELECT friendId, friendName, friendGuid, friendQorDeviceName, "
          "friendQorDevicePhysicalAddressText, friendQorDevicePeerId FROM Friends "
          "WHERE userUuid<>'next' ORDER BY friendId");
  return met;
}

// The next calls work, and see what is there.
void StoreFaults::CallOn() {
  const bool there = !Sql("SELECT 1 FROM Users WHERE userId='bob@x'").empty();
  EXPECT_EQ(Call("uuid bob@x").code, there ? 1 : 5);
  EXPECT_EQ(Call("add-friend-to-db next f g d a p").code, 1);
  EXPECT_EQ(Sql("SELECT friendId FROM Friends WHERE userUuid='next'"), Rows{"f"});
  log_.Take();
}

// On another thread, while the operation's waits in the store.
void StoreFaults::UseSystemAccount() {
  std::async(std::launch::async, [this] {
    std::string text, session;
    int lifetime = 0;
    EXPECT_EQ(service_->GetSessionLifetime(&lifetime), 1);
    EXPECT_EQ(service_->SignInAlt("qornsystem", account::kSystemAccountPassword, &text, &session),
              1);
    EXPECT_EQ(service_->CheckSessionValidation(session), 1);
    EXPECT_EQ(service_->GetUserInfoByType("qornsystem", 101, &text), 1);
    EXPECT_EQ(service_->SignOut(session), 1);
  }).get();
}

void StoreFaults::ExpectNothingOpen() {
  EXPECT_EQ(sqlite3_memory_used(), 0);
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;  // The iterator's own.
    const std::string file = std::filesystem::read_symlink(entry, gone);
    EXPECT_FALSE(file.starts_with(folder_)) << file;
  }
}

void StoreFaults::Judge(const Left& left, const Left& before, const Left& after) {
  EXPECT_THAT(gateway::SplitAtBlanks(operation_.codes),
              testing::Contains(std::to_string(left.code)));
  const bool changes = before.users != after.users || before.friends != after.friends;
  // What is read is whole or not there; a list may break off.
  if (!changes && left.code == after.code && left.outputs != after.outputs) {
    EXPECT_TRUE(operation_.name.starts_with("GetAll")) << left.outputs;
  }
  EXPECT_TRUE(left.code == 1 || left.outputs.empty() || left.outputs == "false");
  const auto holds = [](const Rows& all, const Rows& some) {
    return std::includes(all.begin(), all.end(), some.begin(), some.end());
  };
  if (operation_.leaves == "duplicate") {
    EXPECT_TRUE(holds(left.users, before.users) && holds(left.friends, before.friends));
    return;
  }
  EXPECT_THAT(left.users, testing::AnyOf(before.users, after.users));
  if (operation_.leaves == "friends") {
    EXPECT_TRUE(holds(before.friends, left.friends) && holds(left.friends, after.friends));
  } else {
    EXPECT_THAT(left.friends, testing::AnyOf(before.friends, after.friends));
  }
}

void StoreFaults::TestBody() {
  Left before, after, left;
  Run(true, {}, 0, &before);
  Run(false, {}, 0, &after);
  EXPECT_EQ(std::to_string(after.code), gateway::SplitAtBlanks(operation_.codes)[0]);
  int met = 0;
  for (const FileFault& fault : AllFileFaults()) {
    for (int nth = 1; !HasFailure(); ++nth, ++met) {
      SCOPED_TRACE(testing::Message()
                   << "call " << static_cast<int>(fault.call) << ", kind "
                   << static_cast<int>(fault.kind) << (fault.lasting ? ", from " : ", at ") << nth);
      if (!Run(false, fault, nth, &left)) break;
      Judge(left, before, after);
    }
  }
  EXPECT_GT(met, 0);
  RecordProperty("faults", met);
}

// A cell of a line, without the blanks around it.
std::string Cell(std::istream& line) {
  std::string cell;
  std::getline(line, cell, '|');
  return gateway::JoinWords(gateway::SplitAtBlanks(cell));
}

}  // namespace
}  // namespace faults

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  std::ifstream file(QORN_STORE_OPERATIONS);
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with('#')) continue;
    std::istringstream cells(line);
    faults::Operation o;
    for (std::string* cell : {&o.name, &o.codes, &o.leaves, &o.before, &o.line}) {
      *cell = faults::Cell(cells);
    }
    testing::RegisterTest("StoreFaults", o.name.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                          [o] { return new faults::StoreFaults(o); });
  }
  return RUN_ALL_TESTS();
}
