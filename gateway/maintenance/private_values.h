#ifndef QORN_GATEWAY_MAINTENANCE_PRIVATE_VALUES_H_
#define QORN_GATEWAY_MAINTENANCE_PRIVATE_VALUES_H_

#include <map>
#include <string>

#include "gateway/maintenance/redaction.h"

namespace gateway {

// Adds the secrets and addresses of the configuration.
void AddPrivateConfig(const std::map<std::string, std::string>& config, Redaction* redaction);

// Adds IDs, names and tokens of all users and friends. Does not add anything if the database
// cannot be read.
void AddPrivateRows(const std::string& database, Redaction* redaction);

// Adds IDs of users and friends that an audit names: they may have been removed since.
void AddAudited(const std::string& audit, Redaction* redaction);

}  // namespace gateway

#endif  // QORN_GATEWAY_MAINTENANCE_PRIVATE_VALUES_H_
