#include "gateway/maintenance/restore.h"

#include "gateway/host/database_reader.h"
#include "gateway/host/storage_lock.h"
#include "gateway/maintenance/config.h"
#include "gateway/maintenance/database_copy.h"
#include "gateway/maintenance/files.h"
#include "gateway/output/clock_text.h"
#include "gateway/output/text.h"
#include "gateway/process/exit_status.h"

namespace gateway {
namespace {

void AddWord(const std::string& word, std::string* list) {
  *list += (list->empty() ? "" : ", ") + Visible(word);
}

void SayList(const char* meaning, const std::string& list, std::ostream& out) {
  if (!list.empty()) out << meaning << ": " << list << "\n";
}

// The cloud knows a gateway by its address, and its peer ID contains that.
void SayWhatHangsOnAddress(const Copy& copy, const std::string& address, std::ostream& out) {
  const std::string& old_address = copy.manifest.device_address;
  if (old_address == address) return;
  out << "The copy was made on a gateway with the address " << Visible(old_address)
      << "; this one has " << Visible(address) << ".\n";
  DatabaseReader reader(copy.database);
  std::string users;
  reader.Read("SELECT userId FROM Users ORDER BY rowid",
              [&](sqlite3_stmt* row) { AddWord(ColumnText(row, 0), &users); });
  std::string here;
  std::string elsewhere;
  reader.Read(
      "SELECT friendId || ' (of ' || ifnull(userId, 'nobody') || ')', friendQorDevicePeerId "
      "FROM Friends LEFT JOIN Users USING (userUuid) ORDER BY Friends.rowid",
      [&](sqlite3_stmt* row) {
        const bool old = ColumnText(row, 1).find(old_address) != std::string::npos;
        AddWord(ColumnText(row, 0), old ? &here : &elsewhere);
      });
  SayList("To be registered anew, by removing and creating them", users, out);
  SayList("Friends stored here with the old peer ID", here, out);
  // A friendship stands on both gateways.
  SayList("Friends whose gateways know this one by its old peer ID", elsewhere, out);
}

bool Restore(const MaintenanceOptions& options, StorageConfig* config, Copy* copy, bool* replaced,
             std::string* error) {
  std::string archive;
  if (!ReadStorageConfig(options.config_file, config, error) ||
      !ReadWhole(options.file, kMaxArchiveBytes, &archive, error)) {
    return false;
  }
  *replaced = Exists(config->database);
  if (RestoreDatabase(archive, config->database, copy, error)) return true;
  *error = options.file + ": " + *error;
  return false;
}

}  // namespace

bool RestoreDatabase(const std::string& archive, const std::string& database, Copy* copy,
                     std::string* error) {
  if (!ReadArchive(archive, copy, error) || !CheckDatabase(*copy, error)) return false;
  StorageLock lock;
  if (!lock.Take(database, error)) return false;
  for (const char* suffix : {"-journal", "-wal", "-shm"}) {
    if (!Exists(database + suffix)) continue;
    // SQLite would apply it to the new database.
    *error = "not restored while " + database + suffix + " is there: start and stop the gateway";
    return false;
  }
  return ReplaceDatabase(database, copy->database, error);
}

int RunRestore(const MaintenanceOptions& options, std::ostream& out, std::ostream& err) {
  StorageConfig config;
  Copy copy;
  std::string error;
  bool replaced = false;
  if (!Restore(options, &config, &copy, &replaced, &error)) {
    err << "qorn-gateway: " << Visible(error) << "\n";
    return kExitCommandFailed;
  }
  out << config.database << ": restored as it was at " << UtcText(copy.manifest.time) << ", "
      << DescribeContent(copy.manifest) << "\n";
  if (replaced) {
    out << "The replaced database is " << config.database << ".before-restore\n";
  }
  if (!copy.manifest.tokens && copy.manifest.users > 0) {
    out << "Each user has to sign in with a new code.\n";
  }
  SayWhatHangsOnAddress(copy, config.device_address, out);
  return kExitGood;
}

}  // namespace gateway
