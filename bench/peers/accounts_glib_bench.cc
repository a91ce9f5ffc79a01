// The work of an account store through libaccounts-glib, beside the same work here: the same
// texts, each in a SQLite file of its own, in one process. The cloud answers at once, since
// libaccounts-glib has none.
#include <libaccounts-glib.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>

#include "base/logging.h"
#include "bench/compare.h"
#include "bench/home.h"
#include "bench/service.h"
#include "bench/stored_users.h"
#include "core_fw/account/src/account_log.h"

namespace bench {
namespace {

constexpr long kUsers = 1000;

struct Unreference {
  void operator()(void* object) const { g_object_unref(object); }
};
using PeerAccount = std::unique_ptr<AgAccount, Unreference>;

class Pair {
 public:
  Pair() {
    account::SetComponentLogLevel(logging::LOG_ERROR);
    std::filesystem::create_directory(home_.Path("peer"));
    setenv("ACCOUNTS", home_.Path("peer").c_str(), 1);
    manager_.reset(static_cast<AgManager*>(
        g_initable_new(AG_TYPE_MANAGER, nullptr, nullptr, "use-dbus", FALSE, nullptr)));
    Expect(manager_ != nullptr);
    service_.emplace();
    for (long i = 0; i < kUsers; ++i) {
      peer_ids_.push_back(CreatePeer(UserNumber(i)));
      uuids_.push_back(CreateOurs(UserNumber(i)));
    }
  }

  AgAccountId CreatePeer(const account::UserInfo& user) {
    const PeerAccount made(ag_manager_create_account(manager(), "qorn"));
    ag_account_set_display_name(made.get(), user.userName.c_str());
    const std::pair<const char*, const std::string*> values[] = {
        {"userUuid", &user.userUuid},
        {"userId", &user.userId},
        {"userGuid", &user.userGuid},
        {"accessToken", &user.accessToken},
        {"refreshToken", &user.refreshToken},
        {"registeredDate", &user.registeredDate},
        {"lastSignInDate", &user.lastSignInDate},
        {"lastInfoChangedDate", &user.lastInfoChangedDate}};
    for (const auto& [key, value] : values) {
      ag_account_set_variant(made.get(), key, g_variant_new_string(value->c_str()));
    }
    Expect(ag_account_store_blocking(made.get(), nullptr) == TRUE);
    return made->id;
  }
  std::string CreateOurs(const account::UserInfo& user) {
    std::string uuid;
    // The code is the GUID that the cloud answers with.
    Expect(accounts().CreateUser(user.userId, user.userGuid, &uuid) == 1);
    return uuid;
  }

  PeerAccount LoadPeer(AgAccountId id) {
    PeerAccount loaded(ag_manager_load_account(manager(), id, nullptr));
    Expect(loaded != nullptr);
    return loaded;
  }
  // Both at the next place.
  void Next() { place_ = (place_ + 397) % kUsers; }
  const std::string& uuid() const { return uuids_[static_cast<std::size_t>(place_)]; }
  AgAccountId peer_id() const { return peer_ids_[static_cast<std::size_t>(place_)]; }

  AccountManager& accounts() { return service_->accounts(); }
  AgManager* manager() { return manager_.get(); }

 private:
  Home home_;
  std::unique_ptr<AgManager, Unreference> manager_;
  std::optional<Service> service_;
  std::vector<std::string> uuids_;
  std::vector<AgAccountId> peer_ids_;
  long place_ = 0;
};

void DeletePeer(Pair& pair, AgAccountId id) {
  const PeerAccount removed = pair.LoadPeer(id);
  ag_account_delete(removed.get());
  Expect(ag_account_store_blocking(removed.get(), nullptr) == TRUE);
}

void CreateAndStore(benchmark::State& state) {
  Pair pair;
  const account::UserInfo user = UserNumber(kUsers);
  AgAccountId id = 0;
  bool there = false;
  Compare(
      state, 1, [&] { pair.CreateOurs(user); }, [&] { id = pair.CreatePeer(user); },
      [&] {
        if (there) {
          Expect(pair.accounts().RemoveUser(UserNumber(0).userId, user.userId) == 1);
          DeletePeer(pair, id);
        }
        there = true;
      });
}

void LoadById(benchmark::State& state) {
  Pair pair;
  account::UserInfo read;
  std::string sign_in_state;
  Compare(
      state, 1,
      [&] {
        Expect(pair.accounts().GetUserInformation(
                   pair.uuid(), &read.userId, &read.userName, &sign_in_state, &read.userGuid,
                   &read.accessToken, &read.refreshToken, &read.registeredDate,
                   &read.lastSignInDate, &read.lastInfoChangedDate) == 1);
      },
      [&] {
        const PeerAccount loaded = pair.LoadPeer(pair.peer_id());
        benchmark::DoNotOptimize(ag_account_get_display_name(loaded.get()));
      },
      [&] { pair.Next(); });
}

void ListAll(benchmark::State& state) {
  Pair pair;
  Compare(
      state, 1,
      [&] {
        std::vector<std::string> uuids;
        Expect(pair.accounts().GetAllUsersUUID(&uuids) == 1 && uuids.size() == kUsers + 1);
      },
      [&] {
        GList* const list = ag_manager_list(pair.manager());
        Expect(g_list_length(list) == kUsers);
        ag_manager_list_free(list);
      });
}

void ChangeField(benchmark::State& state) {
  Pair pair;
  long number = 0;
  std::string name;
  Compare(
      state, 1,
      [&] {
        Expect(pair.accounts().SetUserInfoByType(pair.uuid(), kUserInfoSetUserName, name) == 1);
      },
      [&] {
        const PeerAccount loaded = pair.LoadPeer(pair.peer_id());
        ag_account_set_display_name(loaded.get(), name.c_str());
        Expect(ag_account_store_blocking(loaded.get(), nullptr) == TRUE);
      },
      [&] {
        pair.Next();
        name = "name" + std::to_string(++number);
      });
}

void Delete(benchmark::State& state) {
  Pair pair;
  const account::UserInfo user = UserNumber(kUsers);
  AgAccountId id = 0;
  Compare(
      state, 1, [&] { Expect(pair.accounts().RemoveUser(UserNumber(0).userId, user.userId) == 1); },
      [&] { DeletePeer(pair, id); },
      [&] {
        pair.CreateOurs(user);
        id = pair.CreatePeer(user);
      });
}

BENCHMARK(CreateAndStore)->Name("peer/create_and_store")->UseManualTime();
BENCHMARK(LoadById)->Name("peer/load_by_id")->UseManualTime();
BENCHMARK(ListAll)->Name("peer/list_1000")->UseManualTime();
BENCHMARK(ChangeField)->Name("peer/change_a_field")->UseManualTime();
BENCHMARK(Delete)->Name("peer/delete")->UseManualTime();

}  // namespace
}  // namespace bench

int main(int argc, char** argv) { return bench::RunBenchmarks(argc, argv); }
