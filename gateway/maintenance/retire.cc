#include "gateway/maintenance/retire.h"

#include <curl/curl.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "gateway/host/database_reader.h"
#include "gateway/host/host.h"
#include "gateway/host/storage_lock.h"
#include "gateway/maintenance/config.h"
#include "gateway/maintenance/files.h"
#include "gateway/maintenance/traces.h"
#include "gateway/operations/result_names.h"
#include "gateway/output/text.h"
#include "gateway/process/exit_status.h"
#include "gateway/process/proxies.h"
#include "gateway/process/quiet_log.h"
#include "gateway/process/signals.h"

namespace gateway {
namespace {

// Has no row, and cannot be removed.
constexpr char kSystemUser[] = "qornsystem";

class Retirement {
 public:
  Retirement(const MaintenanceOptions& options, std::ostream& out, std::ostream& err)
      : options_(options), out_(out), err_(err) {}

  bool Run() {
    StorageConfig config;
    std::string error;
    if (!ReadStorageConfig(options_.config_file, &config, &error)) return Fail(error);
    // A gateway that has no database yet gets none here: it might be root's.
    if (Exists(config.database) && !EmptyDatabase()) return false;
    // A gateway that starts from here on would lose its new files.
    StorageLock lock;
    if (!lock.Take(config.database, &error)) return Fail(error);
    if (Exists(config.database) && HoldsPeople(config.database)) {
      return Fail(config.database + " could not be emptied");
    }
    out_ << "The database is empty.\n";
    return RemoveFiles(config.database);
  }

 private:
  bool Fail(const std::string& error) {
    err_ << "qorn-gateway: " << error << "\n";
    return false;
  }

  bool EmptyDatabase() {
    ForgetProxies();
    curl_global_init(CURL_GLOBAL_DEFAULT);
    // A signal must not end the process after the cloud issued tokens and before they are stored.
    const StopSignals signals([] {}, [] {});
    const QuietLog quiet;
    std::string error;
    const std::unique_ptr<Host> host =
        Host::Start(options_.config_file, options_.components, &error);
    if (host == nullptr) return Fail(error);
    if (!options_.local && !RemoveFromCloud(host->accounts(), signals)) return false;
    const AccountResult result = host->accounts()->DoFactoryReset();
    return result == kAccountSuccess || Fail("the factory reset " + DescribeResult(result));
  }

  // False if the cloud kept somebody.
  bool RemoveFromCloud(AccountManager* accounts, const StopSignals& signals) {
    std::vector<std::string> uuids;
    const AccountResult result = accounts->GetAllUsersUUID(&uuids);
    if (result != kAccountSuccess) {
      return Fail("the list of users " + DescribeResult(result));
    }
    bool all = true;
    for (const std::string& uuid : uuids) {
      if (uuid == kSystemUser) continue;
      std::string id;
      const AccountResult found = accounts->GetUserInfoByType(uuid, kUserInfoGetUserId, &id);
      if (found != kAccountSuccess) {
        all = Fail("the ID of the user " + uuid + " " + DescribeResult(found));
        continue;
      }
      if (signals.WaitForStop(std::chrono::milliseconds(0))) {
        return Fail("told to stop; run it again");
      }
      all = Remove(accounts, id) && all;
    }
    if (!all) Fail("nothing else was removed: run it again, or with --local to leave them there");
    return all;
  }

  bool Remove(AccountManager* accounts, const std::string& id) {
    // The access token may be too old by now. If it cannot be renewed, it may still do.
    accounts->RefreshAccessToken(id);
    const AccountResult result = accounts->RemoveUser(id, id);
    if (result == kAccountSuccess) {
      out_ << Visible(id) << ": removed, also from the cloud\n";
      return true;
    }
    return Fail("the cloud keeps " + Visible(id) + ": RemoveUser " + DescribeResult(result));
  }

  // A write that fails is not reported by the operations.
  static bool HoldsPeople(const std::string& database) {
    DatabaseReader reader(database, false, 0);
    size_t rows = 1;
    reader.Read(
        "SELECT (SELECT count(*) FROM Users) + (SELECT count(*) FROM Friends)",
        [&](sqlite3_stmt* row) { rows = static_cast<size_t>(sqlite3_column_int64(row, 0)); });
    return rows > 0;
  }

  bool RemoveFiles(const std::string& database) {
    bool all = true;
    for (const std::string& path : FindTraces(database, options_.log_file, options_.audit_file)) {
      std::string error;
      if (RemoveTrace(path, &error)) {
        out_ << path << ": removed\n";
      } else {
        all = Fail(error);
      }
    }
    return all;
  }

  const MaintenanceOptions& options_;
  std::ostream& out_;
  std::ostream& err_;
};

}  // namespace

int RunRetire(const MaintenanceOptions& options, std::ostream& out, std::ostream& err) {
  return Retirement(options, out, err).Run() ? kExitGood : kExitCommandFailed;
}

}  // namespace gateway
