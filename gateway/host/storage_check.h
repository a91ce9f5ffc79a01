#ifndef QORN_GATEWAY_HOST_STORAGE_CHECK_H_
#define QORN_GATEWAY_HOST_STORAGE_CHECK_H_

#include <string>
#include <vector>

namespace gateway {

// One line for each thing that keeps the account component from storing in the database at
// `database`, or from reading what is there; none for "". Writes nothing. Call it before the
// component opens the file: closing another descriptor of it drops the POSIX locks that SQLite
// holds.
std::vector<std::string> FindStorageFaults(const std::string& database);

}  // namespace gateway

#endif  // QORN_GATEWAY_HOST_STORAGE_CHECK_H_
