// What the sync after a journal's deletion costs an operation: the floor runs without it.
#include <sqlite3.h>

#include <string>

#include "base/logging.h"
#include "bench/compare.h"
#include "bench/home.h"
#include "bench/service.h"
#include "bench/stored_users.h"
#include "core_fw/account/src/account_log.h"
#include "gateway/host/durable_storage.h"

namespace bench {
namespace {

// Beneath the durable VFS, so that one connection can be measured both ways.
sqlite3_vfs* g_usual = nullptr;
bool g_durable = false;

int Delete(sqlite3_vfs* /*vfs*/, const char* name, int sync_folder) {
  return g_usual->xDelete(g_usual, name, g_durable ? sync_folder : 0);
}

void UseVfs() {
  static sqlite3_vfs masked;
  g_usual = sqlite3_vfs_find(nullptr);
  masked = *g_usual;
  masked.zName = "qorn-masked";
  masked.pNext = nullptr;
  masked.xDelete = &Delete;
  sqlite3_vfs_register(&masked, 1);
  Require(gateway::UseDurableStorage(), "cannot register a VFS");
}

template <typename Operate>
void CompareBoth(benchmark::State& state, const Operate& operate) {
  const auto with = [&](bool durable) {
    return [&operate, durable] {
      g_durable = durable;
      operate();
    };
  };
  Compare(state, 1, with(true), with(false));
}

class Gateway {
 public:
  Gateway() {
    RawDatabase database(home_.database_path());
    Fill(database, 10, 0);
  }
  AccountManager& accounts() { return service_.accounts(); }

 private:
  Home home_;
  Service service_;
};

void CreateUser(benchmark::State& state) {
  Gateway gateway;
  long number = 100;
  CompareBoth(state, [&] {
    const account::UserInfo user = UserNumber(++number);
    std::string uuid;
    Expect(gateway.accounts().CreateUser(user.userId, user.userGuid, &uuid) == 1);
  });
}

void SetUserInfoByType(benchmark::State& state) {
  Gateway gateway;
  long number = 0;
  CompareBoth(state, [&] {
    Expect(gateway.accounts().SetUserInfoByType(UserNumber(5).userUuid, kUserInfoSetUserName,
                                                "name" + std::to_string(++number % 900)) == 1);
  });
}

BENCHMARK(CreateUser)->Name("durable/CreateUser")->UseManualTime();
BENCHMARK(SetUserInfoByType)->Name("durable/SetUserInfoByType")->UseManualTime();

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  bench::UseVfs();
  account::SetComponentLogLevel(logging::LOG_ERROR);
  return bench::RunBenchmarks(argc, argv);
}
