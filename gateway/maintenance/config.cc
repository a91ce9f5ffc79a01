#include "gateway/maintenance/config.h"

#include <map>

#include "gateway/host/database_path.h"
#include "runtime/config_file.h"

namespace gateway {

bool ReadStorageConfig(const std::string& file, StorageConfig* config, std::string* error) {
  std::map<std::string, std::string> values;
  if (!runtime::ReadConfigFile(file, &values, error)) return false;
  config->database = JoinDatabasePath(values["qorn_storage_path"], values["account_db_path"]);
  config->device_address = values["account_device_physical_address_text"];
  if (config->database.empty()) *error = file + ": names no database: account_db_path is missing";
  return !config->database.empty();
}

}  // namespace gateway
