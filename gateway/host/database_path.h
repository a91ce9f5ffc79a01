#ifndef QORN_GATEWAY_HOST_DATABASE_PATH_H_
#define QORN_GATEWAY_HOST_DATABASE_PATH_H_

#include <string>

namespace gateway {

// The path of the database's file as the account component puts it together from
// qorn_storage_path and account_db_path; "" when the latter is empty.
std::string JoinDatabasePath(const std::string& storage_path, const std::string& file_name);

}  // namespace gateway

#endif  // QORN_GATEWAY_HOST_DATABASE_PATH_H_
