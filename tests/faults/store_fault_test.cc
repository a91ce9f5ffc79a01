// Every operation that uses the store, on files of which every call fails, in turn.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <future>

#include "base/clock.h"
#include "core_fw/account/src/account_records.h"
#include "tests/faults/faulty_vfs.h"
#include "tests/faults/operation_sweep.h"

namespace faults {
namespace {

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

class StoreFaults : public OperationSweep {
 public:
  explicit StoreFaults(SweptOperation operation);
  ~StoreFaults() override { base::Clock::Replace(nullptr); }
  void TestBody() override;

 private:
  gateway::Answer CallWith(const FileFault& fault, int nth, bool* met);
  // Starts the service anew under the fault. The answer is that of the next call without it.
  gateway::Answer StartWith(const FileFault& fault, int nth, bool* met);
  void UseSystemAccount();
  void CheckAfterShutdown() override;

  FaultyVfs vfs_;
};

StoreFaults::StoreFaults(SweptOperation operation) : OperationSweep(std::move(operation)) {
  base::Clock::Replace(std::make_shared<JumpingClock>());
  StartRuntime();
  StoreUsers();
  std::filesystem::rename(baseline_, database_path());
  Sql("WITH RECURSIVE n(i) AS (SELECT 1 UNION SELECT i + 1 FROM n WHERE i < 40) INSERT INTO Users "
      "SELECT 'u' || i, 'i' || i, '', i, hex(zeroblob(120)), '', '', '', '' FROM n;"
      "UPDATE Users SET registeredDate=1, lastSignInDate=1, lastInfoChangedDate=1");
  std::filesystem::rename(database_path(), baseline_);
}

gateway::Answer StoreFaults::CallWith(const FileFault& fault, int nth, bool* met) {
  // Another process changed the schema: it has to be read again.
  if (fault.lasting) Sql("CREATE INDEX i ON Users(userId); DROP INDEX i");
  vfs_.Set(fault, nth, [this] { UseSystemAccount(); });
  const gateway::Answer answer = Call(operation_.line);
  *met = vfs_.Clear();
  if (answer.code == 4) {
    EXPECT_THAT(log_.Take(), testing::Contains(testing::HasSubstr("Fail to sqlite3_exec(), ")));
  }
  return answer;
}

gateway::Answer StoreFaults::StartWith(const FileFault& fault, int nth, bool* met) {
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

// Nothing is open.
void StoreFaults::CheckAfterShutdown() {
  EXPECT_EQ(sqlite3_memory_used(), 0);
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;  // The iterator's own.
    const std::string file = std::filesystem::read_symlink(entry, gone);
    EXPECT_FALSE(file.starts_with(folder_)) << file;
  }
}

void StoreFaults::TestBody() {
  const auto call = operation_.line == "start" ? &StoreFaults::StartWith : &StoreFaults::CallWith;
  FileFault fault{};
  const Operate operate = [&](int nth, bool* met) {
    const gateway::Answer answer = (this->*call)(fault, nth, met);
    EXPECT_THAT(operation_.codes, testing::Contains(std::to_string(answer.code)));
    return answer;
  };
  LearnWithoutFaults(operate);
  for (const FileFault& next : AllFileFaults()) {
    fault = next;
    MeetAll("call " + std::to_string(static_cast<int>(fault.call)) + ", kind " +
                std::to_string(static_cast<int>(fault.kind)) +
                (fault.lasting ? " and all after" : ""),
            1, operate);
  }
}

}  // namespace
}  // namespace faults

int main(int argc, char** argv) {
  return faults::RunSweeps<faults::StoreFaults>(
      argc, argv, "StoreFaults",
      [](const faults::SweptOperation& operation) { return operation.codes.size() > 1; });
}
