#ifndef QORN_GATEWAY_MAINTENANCE_TRACES_H_
#define QORN_GATEWAY_MAINTENANCE_TRACES_H_

#include <string>
#include <vector>

namespace gateway {

// The files beside the database that name people and are there: what a restore kept, the
// keeper's state, log and audit ("" for none) with those that were rotated, and the console's
// history of this user.
std::vector<std::string> FindTraces(const std::string& database, const std::string& log_file,
                                    const std::string& audit_file);

// Removes a file. False, with one line in `error`, when that fails.
bool RemoveTrace(const std::string& path, std::string* error);

}  // namespace gateway

#endif  // QORN_GATEWAY_MAINTENANCE_TRACES_H_
