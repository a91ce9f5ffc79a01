#ifndef QORN_GATEWAY_MAINTENANCE_CONFIG_H_
#define QORN_GATEWAY_MAINTENANCE_CONFIG_H_

#include <string>

namespace gateway {

// What maintenance needs to know of the configuration.
struct StorageConfig {
  std::string database;  // the path of its file
  std::string device_address;
};

// False, with one line in `error`, if the file cannot be read or names no database.
bool ReadStorageConfig(const std::string& file, StorageConfig* config, std::string* error);

}  // namespace gateway

#endif  // QORN_GATEWAY_MAINTENANCE_CONFIG_H_
