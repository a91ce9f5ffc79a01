#include "gateway/maintenance/backup.h"

#include <unistd.h>

#include <ctime>

#include "gateway/host/storage_lock.h"
#include "gateway/maintenance/archive.h"
#include "gateway/maintenance/config.h"
#include "gateway/maintenance/database_copy.h"
#include "gateway/maintenance/files.h"
#include "gateway/process/exit_status.h"

namespace gateway {
namespace {

bool Backup(const MaintenanceOptions& options, Copy* copy, std::string* error) {
  StorageConfig config;
  if (!ReadStorageConfig(options.config_file, &config, error)) return false;
  if (options.file == "-" && isatty(STDOUT_FILENO) != 0) {
    *error = "a copy is not for a terminal: name a file, or pipe it on";
    return false;
  }
  StorageLock lock;
  // The gateway's next refresh would make the tokens of the copy useless.
  if (options.with_tokens && !lock.Take(config.database, error)) {
    *error += ", and its tokens change: stop it first";
    return false;
  }
  copy->manifest.time = std::time(nullptr);
  copy->manifest.device_address = config.device_address;
  return CopyDatabase(config.database, options.with_tokens, copy, error) &&
         WriteWhole(options.file, MakeArchive(*copy), options.force, error);
}

}  // namespace

int RunBackup(const MaintenanceOptions& options, std::ostream& out, std::ostream& err) {
  Copy copy;
  std::string error;
  if (!Backup(options, &copy, &error)) {
    err << "qorn-gateway: " << error << "\n";
    return kExitCommandFailed;
  }
  if (options.file != "-") out << options.file << ": " << DescribeContent(copy.manifest) << "\n";
  return kExitGood;
}

}  // namespace gateway
