// Every operation of the store beside the same statements on bare SQLite, over a connection of its
// own to the same file: where a file lies in memory makes a difference of its own.
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "bench/compare.h"
#include "bench/home.h"
#include "bench/stored_users.h"
#include "core_fw/account/src/account_db_wrapper.h"

namespace bench {
namespace {

// Beyond that many friends one size would take longer than all others together.
constexpr long kMostFriends = 1000000;

class Pair {
 public:
  Pair(long users, long friends) : users_(users), friends_(friends) {
    Open();
    {
      RawDatabase database(home_.database_path());
      Fill(database, users, friends);
    }
    std::filesystem::copy_file(home_.database_path(), home_.Path("filled"));
    Restore();
  }

  // The file as it was filled, and connections that are new to it.
  void Restore() {
    store_.reset();
    raw_.reset();
    Copy("account.db");
    Open();
    raw_.emplace(home_.database_path());
  }

  // The same, with a copy for the floor, which cannot empty what is empty.
  void RestoreTwice() {
    Restore();
    Copy("floor.db");
    raw_.emplace(home_.Path("floor.db"));
    raw_->Run(kUserByUuid, {""});  // The store has read the schema too.
  }

  // Changes the file over a connection of its own, which empties the caches of both.
  template <typename Change>
  void ChangeAside(const Change& change) {
    RawDatabase database(home_.database_path());
    change(database);
  }

  account::AccountDBWrapper& store() { return *store_; }
  RawDatabase& raw() { return *raw_; }
  // One user after the other, in no order that a cache knows.
  long NextUser() { return next_ = (next_ + 7919) % users_; }
  long NextFriend() { return friends_ == 0 ? 0 : friend_ = (friend_ + 397) % friends_; }
  bool Is(long users, long friends) const { return users_ == users && friends_ == friends; }

 private:
  void Copy(const char* name) {
    std::filesystem::remove(home_.Path(name));
    std::filesystem::copy_file(home_.Path("filled"), home_.Path(name));
  }
  void Open() {
    store_ = std::make_unique<account::AccountDBWrapper>();
    Require(store_->Init(), "the store does not open");
  }

  const long users_, friends_;
  long next_ = 0, friend_ = 0;
  Home home_;
  std::unique_ptr<account::AccountDBWrapper> store_;
  std::optional<RawDatabase> raw_;
};

Pair& PairOf(const benchmark::State& state) {
  static std::unique_ptr<Pair> pair;
  if (pair == nullptr || !pair->Is(state.range(0), state.range(1))) {
    pair.reset();
    pair = std::make_unique<Pair>(state.range(0), state.range(1));
  }
  return *pair;
}

void GetUserByUserUuid(benchmark::State& state) {
  Pair& pair = PairOf(state);
  std::string uuid;
  account::UserInfo user;
  Compare(
      state, 1, [&] { Expect(pair.store().GetUserByUserUuid(uuid, user) == 1); },
      [&] {
        pair.raw().Read(kUserByUuid, {uuid}, [&](sqlite3_stmt* row) { TakeUser(row, &user); });
      },
      [&] { uuid = UserNumber(pair.NextUser()).userUuid; });
}

void GetUserByUserId(benchmark::State& state) {
  Pair& pair = PairOf(state);
  std::string id;
  account::UserInfo user;
  Compare(
      state, 1, [&] { Expect(pair.store().GetUserByUserId(id, user) == 1); },
      [&] { pair.raw().Read(kUserById, {id}, [&](sqlite3_stmt* row) { TakeUser(row, &user); }); },
      [&] { id = UserNumber(pair.NextUser()).userId; });
}

void GetUserUUIDFromUserID(benchmark::State& state) {
  Pair& pair = PairOf(state);
  std::string id, uuid;
  Compare(
      state, 1, [&] { Expect(pair.store().GetUserUUIDFromUserID(id, uuid) == 1); },
      [&] {
        pair.raw().Read(kUuidById, {id},
                        [&](sqlite3_stmt* row) { RawDatabase::Take(row, 0, &uuid); });
      },
      [&] { id = UserNumber(pair.NextUser()).userId; });
}

// A list of all UUIDs, into a vector that is new each time.
std::vector<std::string> RawUuids(RawDatabase& raw, const char* sql, RawDatabase::Values values) {
  std::vector<std::string> uuids;
  raw.Read(sql, values, [&](sqlite3_stmt* row) {
    uuids.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(row, 0)),
                       static_cast<std::size_t>(sqlite3_column_bytes(row, 0)));
  });
  return uuids;
}

void GetAllUsersUuidList(benchmark::State& state) {
  Pair& pair = PairOf(state);
  Compare(
      state, 1,
      [&] {
        std::vector<std::string> uuids;
        Expect(pair.store().GetAllUsersUuidList(uuids) == 1);
      },
      [&] { RawUuids(pair.raw(), kAllUsers, {}); });
}

void AddUser(benchmark::State& state) {
  Pair& pair = PairOf(state);
  const account::UserInfo ours = UserNumber(state.range(0));
  const account::UserInfo floor = UserNumber(state.range(0) + 1);
  Compare(
      state, 1, [&] { Expect(pair.store().AddUser(ours) == 1); },
      [&] {
        Expect(pair.raw().Run(kUserById, {floor.userId}) == 0);
        Expect(pair.raw().Run(kUserByGuid, {floor.userGuid}) == 0);
        InsertUser(pair.raw(), floor);
      },
      [&] {
        pair.ChangeAside([&](RawDatabase& database) {
          for (const auto* user : {&ours, &floor}) database.Run(kDeleteUser, {user->userUuid});
        });
      });
  pair.Restore();
}

void RemoveUser(benchmark::State& state) {
  Pair& pair = PairOf(state);
  const account::UserInfo ours = UserNumber(state.range(0));
  const account::UserInfo floor = UserNumber(state.range(0) + 1);
  Compare(
      state, 1, [&] { Expect(pair.store().RemoveUser(ours.userUuid) == 1); },
      [&] { pair.raw().Run(kDeleteUser, {floor.userUuid}); },
      [&] {
        pair.ChangeAside([&](RawDatabase& database) {
          for (const auto* user : {&ours, &floor}) InsertUser(database, *user);
        });
      });
  pair.Restore();
}

void ModifyUser(benchmark::State& state) {
  Pair& pair = PairOf(state);
  account::UserInfo user, floor;
  long number = 0;  // A row that stays as it is would not be written.
  Compare(
      state, 1, [&] { Expect(pair.store().ModifyUser(user) == 1); },
      [&] { UpdateUser(pair.raw(), floor); },
      [&] {
        user = floor = UserNumber(pair.NextUser());
        user.userName = "name" + std::to_string(++number % 900 + 100);
        floor.userName = "mane" + std::to_string(number % 900 + 100);
      });
}

void GetFriend(benchmark::State& state) {
  Pair& pair = PairOf(state);
  std::string uuid;
  account::FriendInfo found;
  Compare(
      state, 1,
      [&] { Expect(pair.store().GetFriend(uuid, found) == (state.range(1) == 0 ? 9 : 1)); },
      [&] {
        pair.raw().Read(kFriendByUuid, {uuid}, [&](sqlite3_stmt* row) { TakeFriend(row, &found); });
      },
      [&] { uuid = FriendNumber(pair.NextUser(), pair.NextFriend()).friendUuid; });
}

void GetFriendUUIDFromFriendIDAndFriendPeerID(benchmark::State& state) {
  Pair& pair = PairOf(state);
  std::string owner, uuid;
  account::FriendInfo wanted;
  Compare(
      state, 1,
      [&] {
        Expect(pair.store().GetFriendUUIDFromFriendIDAndFriendPeerID(
                   owner, wanted.friendId, wanted.friendQorDevicePeerId, uuid) ==
               (state.range(1) == 0 ? 8 : 1));
      },
      [&] {
        pair.raw().Read(kFriendByPeer, {owner, wanted.friendId, wanted.friendQorDevicePeerId},
                        [&](sqlite3_stmt* row) { RawDatabase::Take(row, 0, &uuid); });
      },
      [&] {
        const long user = pair.NextUser();
        owner = UserNumber(user).userUuid;
        wanted = FriendNumber(user, pair.NextFriend());
      });
}

void GetAllFriendsUuidList(benchmark::State& state) {
  Pair& pair = PairOf(state);
  std::string owner;
  Compare(
      state, 1,
      [&] {
        std::vector<std::string> uuids;
        Expect(pair.store().GetAllFriendsUuidList(owner, uuids) == 1);
      },
      [&] { RawUuids(pair.raw(), kAllFriends, {owner}); },
      [&] { owner = UserNumber(pair.NextUser()).userUuid; });
}

void AddFriend(benchmark::State& state) {
  Pair& pair = PairOf(state);
  const std::string owner = UserNumber(0).userUuid;
  const account::FriendInfo ours = FriendNumber(0, state.range(1));
  const account::FriendInfo floor = FriendNumber(0, state.range(1) + 1);
  Compare(
      state, 1, [&] { Expect(pair.store().AddFriend(owner, ours) == 1); },
      [&] {
        Expect(pair.raw().Run(kFriendOfOwner, {floor.friendId, owner}) == 0);
        InsertFriend(pair.raw(), owner, floor);
      },
      [&] {
        pair.ChangeAside([&](RawDatabase& database) {
          for (const auto* made : {&ours, &floor}) database.Run(kDeleteFriend, {made->friendUuid});
        });
      });
  pair.Restore();
}

void RemoveFriend(benchmark::State& state) {
  Pair& pair = PairOf(state);
  const std::string owner = UserNumber(0).userUuid;
  const account::FriendInfo ours = FriendNumber(0, state.range(1));
  const account::FriendInfo floor = FriendNumber(0, state.range(1) + 1);
  Compare(
      state, 1, [&] { Expect(pair.store().RemoveFriend(ours.friendUuid) == 1); },
      [&] { pair.raw().Run(kDeleteFriend, {floor.friendUuid}); },
      [&] {
        pair.ChangeAside([&](RawDatabase& database) {
          for (const auto* made : {&ours, &floor}) InsertFriend(database, owner, *made);
        });
      });
  pair.Restore();
}

void DeleteAll(benchmark::State& state) {
  Pair& pair = PairOf(state);
  Compare(
      state, 1, [&] { Expect(pair.store().DeleteAll() == 1); },
      [&] {
        for (const char* sql : {"DELETE FROM Users", "DELETE FROM Friends", "VACUUM"}) {
          pair.raw().Run(sql);
        }
      },
      [&] { pair.RestoreTwice(); });
  pair.Restore();
}

using Bench = void (*)(benchmark::State&);
constexpr std::pair<const char*, Bench> kUserBenches[] = {
    {"GetUserByUserUuid", &GetUserByUserUuid},
    {"GetUserByUserId", &GetUserByUserId},
    {"GetUserUUIDFromUserID", &GetUserUUIDFromUserID},
    {"GetAllUsersUuidList", &GetAllUsersUuidList},
    {"AddUser", &AddUser},
    {"RemoveUser", &RemoveUser},
    {"ModifyUser", &ModifyUser},
};
constexpr std::pair<const char*, Bench> kFriendBenches[] = {
    {"GetFriend", &GetFriend},
    {"GetFriendUUIDFromFriendIDAndFriendPeerID", &GetFriendUUIDFromFriendIDAndFriendPeerID},
    {"GetAllFriendsUuidList", &GetAllFriendsUuidList},
    {"AddFriend", &AddFriend},
    {"RemoveFriend", &RemoveFriend},
    {"DeleteAll", &DeleteAll},
};

void Register(const std::pair<const char*, Bench>& bench, long users, long friends) {
  benchmark::RegisterBenchmark(("store/" + std::string(bench.first)).c_str(), bench.second)
      ->ArgNames({"users", "friends"})
      ->Args({users, friends})
      ->UseManualTime();
}

// One size after the other, since each has to be filled.
void RegisterAll() {
  for (const long users : {10L, 1000L, 100000L}) {
    for (const long friends : {0L, 10L, 1000L}) {
      if (users * friends > kMostFriends) continue;
      if (friends == 0) {
        for (const auto& bench : kUserBenches) Register(bench, users, friends);
      }
      for (const auto& bench : kFriendBenches) Register(bench, users, friends);
    }
  }
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  bench::RegisterAll();
  return bench::RunBenchmarks(argc, argv);
}
