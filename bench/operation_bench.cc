// Operations of the service, with a cloud that answers at once, beside the statements that they
// must run.
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/logging.h"
#include "bench/compare.h"
#include "bench/home.h"
#include "bench/service.h"
#include "bench/stored_users.h"
#include "core_fw/account/src/account_log.h"
#include "core_fw/account/src/session_table.h"
#include "evt/event_manager.h"

namespace bench {
namespace {

// The ways in which each operation is measured.
enum Way : long { kQuiet, kFullLog, kListener };
constexpr std::pair<Way, const char*> kWays[] = {{kQuiet, "operation/"},
                                                 {kFullLog, "operation-default-log/"},
                                                 {kListener, "operation-listener/"}};

class Pair {
 public:
  explicit Pair(const benchmark::State& state) : users_(state.range(0)) {
    account::SetComponentLogLevel(state.range(1) == kFullLog ? logging::LOG_INFO
                                                             : logging::LOG_ERROR);
    if (state.range(1) == kListener) {
      for (int type = 1; type <= 8; ++type) {
        listeners_.push_back(evt::EventManager::GetInstance()->AddListener(
            type, [](int /*type*/, const Pickle& data) { benchmark::DoNotOptimize(data.size()); }));
      }
    }
    {
      RawDatabase database(home_.database_path());
      database.Run(kCreateUsers);
      database.Run(kCreateFriends);
      Fill(database, users_, 0);
    }
    std::filesystem::copy_file(home_.database_path(), home_.Path("floor.db"));
    service_.emplace();
    raw_.emplace(home_.Path("floor.db"));
  }
  ~Pair() {
    for (int listener : listeners_) evt::EventManager::GetInstance()->RemoveListener(listener);
    account::SetComponentLogLevel(logging::LOG_INFO);
  }
  Pair(const Pair&) = delete;
  Pair& operator=(const Pair&) = delete;

  // Changes both files over connections of its own, which empties the caches of both alike.
  template <typename Change>
  void ChangeAside(const Change& change) {
    for (const char* name : {"account.db", "floor.db"}) {
      RawDatabase database(home_.Path(name));
      change(database);
    }
  }

  AccountManager& accounts() { return service_->accounts(); }
  RawDatabase& raw() { return *raw_; }
  account::UserInfo NextUser() { return UserNumber(next_ = (next_ + 7919) % users_); }

 private:
  const long users_;
  long next_ = 0;
  std::vector<int> listeners_;
  Home home_;
  std::optional<Service> service_;
  std::optional<RawDatabase> raw_;
};

void ReadRaw(RawDatabase& raw, const char* sql, const std::string& value, account::UserInfo* user) {
  Expect(raw.Read(sql, {value}, [&](sqlite3_stmt* row) { TakeUser(row, user); }) == 1);
}

void SignInAlt(benchmark::State& state) {
  Pair pair(state);
  account::UserInfo user, read;
  std::string uuid, session_id;
  Compare(
      state, 1,
      [&] { Expect(pair.accounts().SignInAlt(user.userId, "", &uuid, &session_id) == 1); },
      [&] {
        ReadRaw(pair.raw(), kUserById, user.userId, &read);
        read.lastSignInDate = std::to_string(time(nullptr));
        UpdateUser(pair.raw(), read);
      },
      [&] {
        user = pair.NextUser();
        account::SessionTable::GetInstance()->RemoveAllSessions();
        // A row that stays as it is would not be written.
        pair.ChangeAside([&](RawDatabase& database) {
          database.Run("UPDATE Users SET lastSignInDate='1' WHERE userUuid=?", {user.userUuid});
        });
      });
}

void GetUserInformation(benchmark::State& state) {
  Pair pair(state);
  account::UserInfo user, read;
  std::string sign_in_state, session_id;
  account::SessionTable::GetInstance()->AddSession(UserNumber(0).userId, &session_id);
  Compare(
      state, 1,
      [&] {
        Expect(pair.accounts().GetUserInformation(
                   user.userUuid, &read.userId, &read.userName, &sign_in_state, &read.userGuid,
                   &read.accessToken, &read.refreshToken, &read.registeredDate,
                   &read.lastSignInDate, &read.lastInfoChangedDate) == 1);
      },
      [&] { ReadRaw(pair.raw(), kUserByUuid, user.userUuid, &read); },
      [&] { user = pair.NextUser(); });
}

void SetUserInfoByType(benchmark::State& state) {
  Pair pair(state);
  account::UserInfo user, read;
  long number = 0;
  std::string name;
  Compare(
      state, 1,
      [&] {
        Expect(pair.accounts().SetUserInfoByType(user.userUuid, kUserInfoSetUserName, name) == 1);
      },
      [&] {
        ReadRaw(pair.raw(), kUserByUuid, user.userUuid, &read);
        read.userName = name;
        UpdateUser(pair.raw(), read);
      },
      [&] {
        user = pair.NextUser();
        name = "name" + std::to_string(++number % 900 + 100);
      });
}

void RemoveUser(benchmark::State& state) {
  Pair pair(state);
  const account::UserInfo removed = UserNumber(state.range(0));
  account::UserInfo user, read;
  Compare(
      state, 1, [&] { Expect(pair.accounts().RemoveUser(user.userId, removed.userId) == 1); },
      [&] {
        std::string uuid;
        const auto take_uuid = [&](sqlite3_stmt* row) { RawDatabase::Take(row, 0, &uuid); };
        for (const std::string& id : {user.userId, removed.userId, user.userId, removed.userId}) {
          Expect(pair.raw().Read(kUuidById, {id}, take_uuid) == 1);
        }
        ReadRaw(pair.raw(), kUserByUuid, user.userUuid, &read);
        ReadRaw(pair.raw(), kUserByUuid, removed.userUuid, &read);
        pair.raw().Run(kDeleteUser, {removed.userUuid});
        pair.raw().Run(kAllFriends, {removed.userUuid});
      },
      [&] {
        user = pair.NextUser();
        pair.ChangeAside([&](RawDatabase& database) { InsertUser(database, removed); });
      });
}

void Register(const char* name, void (*bench)(benchmark::State&)) {
  for (const auto& [way, group] : kWays) {
    auto* made = benchmark::RegisterBenchmark((std::string(group) + name).c_str(), bench)
                     ->ArgNames({"users", "way"})
                     ->UseManualTime();
    for (const long users : {10L, 1000L}) made->Args({users, way});
  }
}

void RegisterAll() {
  Register("SignInAlt", &SignInAlt);
  Register("GetUserInformation", &GetUserInformation);
  Register("SetUserInfoByType", &SetUserInfoByType);
  Register("RemoveUser", &RemoveUser);
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  bench::RegisterAll();
  return bench::RunBenchmarks(argc, argv);
}
