// What each operation that writes does to a flash memory, beside bare SQLite with the same
// statements, and how much log and audit it leaves. flash_probe prints a line for each figure: its
// name, ours, the floor ("-" for none) and the unit.
#include <cstdio>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <sstream>
#include <string_view>
#include <tuple>
#include <utility>

#include "base/logging.h"
#include "bench/home.h"
#include "bench/memory_disk.h"
#include "bench/service.h"
#include "bench/stored_users.h"
#include "core_fw/account/src/account_log.h"
#include "evt/event_manager.h"
#include "gateway/console/console.h"
#include "gateway/console/views.h"
#include "gateway/operations/event_listener.h"

namespace bench {
namespace {

constexpr long kUsers = 10;
constexpr long kFriendsOfEach = 2;
constexpr int kPage = 4096;
constexpr std::pair<int, std::string_view> kLevels[] = {{logging::LOG_INFO, "LOG_INFO"},
                                                        {logging::LOG_ERROR, "LOG_ERROR"}};

// What was done to a disk.
class Wear {
 public:
  void Note(const DiskChange& change) {
    switch (change.kind) {
      case DiskChange::Kind::kCreate:
        ++files_made;
        break;
      case DiskChange::Kind::kWrite:
        bytes += static_cast<long>(change.data.size());
        for (auto at = change.at / kPage * kPage;
             at < change.at + static_cast<long>(change.data.size()); at += kPage) {
          unsynced_.insert({change.file, at});
        }
        break;
      case DiskChange::Kind::kTruncate:
        break;
      case DiskChange::Kind::kSync:
        ++syncs;
        pages += static_cast<long>(
            std::erase_if(unsynced_, [&](const auto& page) { return page.first == change.file; }));
        break;
      case DiskChange::Kind::kDelete:
        ++files_deleted;
        break;
      case DiskChange::Kind::kSyncFolder:
        ++syncs;
    }
  }

  long bytes = 0;  // that SQLite writes
  long pages = 0;  // of 4,096 bytes that its syncs bring to the disk
  long syncs = 0;  // of files and folders
  long files_made = 0;
  long files_deleted = 0;

 private:
  std::set<std::pair<int, std::int64_t>> unsynced_;  // Files and offsets of pages.
};

// A gateway with ten users, whose operations are called as on its console.
class Gateway {
 public:
  using Call = std::function<void()>;
  using Floor = std::function<void(RawDatabase& floor)>;

  Gateway(int log_level, std::string_view log_name)
      : log_name_(log_name),
        printer_(shown_, shown_, {}),
        listener_([this](const auto& event) { audit_.NoteEvent(event); }) {
    account::SetComponentLogLevel(log_level);
    Require(audit_.Open(home_.Path("audit")), "cannot write an audit");
    disk_.Observe([this](const DiskChange& change) {
      if (meter_ != nullptr) meter_->Note(change);
    });
  }

  // Makes the service, which makes the tables, and then the users.
  void Start() {
    Measure(
        "Start", [this] { service_.emplace(); },
        [](RawDatabase& floor) {
          floor.Run(kCreateUsers);
          floor.Run(kCreateFriends);
        });
    RawDatabase database(home_.database_path());
    Fill(database, kUsers, kFriendsOfEach);
    gateway::ConsoleServices services;
    gateway::UseAccounts(&service_->accounts(), &services);
    services.flush_events = [] { evt::EventManager::GetInstance()->Flush(); };
    console_.emplace(services, gateway::Console::Parts{&printer_, &activity_, &seen_ids_, &audit_});
  }
  void Measure(const char* name, const std::string& line, const Floor& floor) {
    Measure(
        name, [&] { Require(console_->Execute(line).error.empty(), name); }, floor);
  }

  // The row as it is now.
  account::UserInfo Read(const std::string& user_id) {
    account::UserInfo user;
    RawDatabase(home_.database_path()).Read(kUserById, {user_id}, [&](sqlite3_stmt* row) {
      TakeUser(row, &user);
    });
    return user;
  }
  account::FriendInfo ReadFriend(const std::string& owner, const std::string& friend_id) {
    account::FriendInfo found;
    RawDatabase(home_.database_path())
        .Read(kFriendOfOwner, {friend_id, owner},
              [&](sqlite3_stmt* row) { TakeFriend(row, &found); });
    return found;
  }

 private:
  long SizeOf(const char* name) const {
    return static_cast<long>(std::filesystem::file_size(home_.Path(name)));
  }

  void Measure(const char* name, const Call& call, const Floor& floor) {
    disk_.Copy(home_.database_path(), home_.Path("floor.db"));
    const long log_before = SizeOf("log"), audit_before = SizeOf("audit");
    Wear ours, bare;
    meter_ = &ours;
    call();
    meter_ = &bare;
    {
      RawDatabase database(home_.Path("floor.db"));
      floor(database);
    }
    meter_ = nullptr;
    std::printf("flash-%s/%s %ld - bytes\n", log_name_.data(), name, SizeOf("log") - log_before);
    // The rest does not depend on the level.
    if (log_name_ != kLevels[0].second) return;
    std::printf("flash-audit/%s %ld - bytes\n", name, SizeOf("audit") - audit_before);
    PrintWear(name, ours, bare);
  }

  static void PrintWear(const char* name, const Wear& ours, const Wear& bare) {
    for (const auto& [what, unit, count] :
         {std::tuple("bytes", "bytes", &Wear::bytes), std::tuple("pages", "pages", &Wear::pages),
          std::tuple("syncs", "syncs", &Wear::syncs),
          std::tuple("files_made", "files", &Wear::files_made),
          std::tuple("files_deleted", "files", &Wear::files_deleted)}) {
      if (ours.*count == 0 && bare.*count == 0) continue;  // It has no ratio.
      std::printf("flash/%s/%s %ld %ld %s\n", name, what, ours.*count, bare.*count, unit);
    }
  }

  const std::string_view log_name_;
  MemoryDisk disk_;
  Home home_;
  Wear* meter_ = nullptr;
  std::ostringstream shown_;
  gateway::Printer printer_;
  gateway::Activity activity_;
  gateway::SeenIds seen_ids_;
  gateway::Audit audit_;
  gateway::EventListener listener_;
  std::optional<Service> service_;
  std::optional<gateway::Console> console_;
};

void MeasureAll(int log_level, std::string_view log_name) {
  Gateway gateway(log_level, log_name);
  const auto user = [](long number) { return UserNumber(number).userId; };
  const auto overwrite = [&](long number) {
    return
        [&gateway, id = user(number)](RawDatabase& floor) { UpdateUser(floor, gateway.Read(id)); };
  };
  gateway.Start();
  // A code is its user's GUID.
  gateway.Measure("CreateUser", "create-user new@example.com guid-new",
                  [&](RawDatabase& floor) { InsertUser(floor, gateway.Read("new@example.com")); });
  gateway.Measure("SignIn", "sign-in " + user(0) + " " + UserNumber(0).userGuid, overwrite(0));
  gateway.Measure("SignInAlt", "sign-in-alt " + user(1) + " ''", overwrite(1));
  // Writes nothing.
  const auto nothing = [](RawDatabase& /*floor*/) {};
  gateway.Measure("KeepSession", "reset-count-for-session-maintenance $session_id", nothing);
  gateway.Measure("SignOut", "sign-out $session_id", nothing);
  gateway.Measure("SetUserInfoByType",
                  "set-user-info-by-type " + UserNumber(2).userUuid + " 201 Anna", overwrite(2));
  gateway.Measure("RefreshAccessToken", "refresh-access-token " + user(3), overwrite(3));
  const std::string owner = UserNumber(4).userUuid;
  gateway.Measure("AddFriendToDB",
                  "add-friend-to-db " + owner + " pal@example.com guid-pal Home 02 PEER-02",
                  [&](RawDatabase& floor) {
                    InsertFriend(floor, owner, gateway.ReadFriend(owner, "pal@example.com"));
                  });
  const account::FriendInfo gone = FriendNumber(4, 0);
  gateway.Measure(
      "RemoveFriendFromDB",
      "remove-friend-from-db " + owner + " " + gone.friendId + " " + gone.friendQorDevicePeerId,
      [&](RawDatabase& floor) { floor.Run(kDeleteFriend, {gone.friendUuid}); });
  gateway.Measure("RemoveUser", "remove-user " + user(0) + " " + user(5), [](RawDatabase& floor) {
    floor.Run(kDeleteUser, {UserNumber(5).userUuid});
    for (long number = 0; number < kFriendsOfEach; ++number) {
      floor.Run(kDeleteFriend, {FriendNumber(5, number).friendUuid});
    }
  });
  gateway.Measure("DoFactoryReset", "do-factory-reset", [](RawDatabase& floor) {
    for (const char* sql : {"DELETE FROM Users", "DELETE FROM Friends", "VACUUM"}) floor.Run(sql);
  });
}

}  // namespace
}  // namespace bench

int main() {
  for (const auto& [level, name] : bench::kLevels) bench::MeasureAll(level, name);
  return 0;
}
