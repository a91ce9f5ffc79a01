#ifndef QORN_GATEWAY_HOST_DATABASE_PATH_H_
#define QORN_GATEWAY_HOST_DATABASE_PATH_H_

#include <string>

namespace gateway {

// The path of the database's file, composed of qorn_storage_path and account_db_path exactly as the
// account component does it; "" when the latter is empty.
std::string JoinDatabasePath(const std::string& storage_path, const std::string& file_name);

// The folder of a file, without "/" at its end; "." for a name alone.
std::string FolderOf(const std::string& path);

}  // namespace gateway

#endif  // QORN_GATEWAY_HOST_DATABASE_PATH_H_
