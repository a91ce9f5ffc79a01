#ifndef QORN_GATEWAY_MAINTENANCE_BACKUP_H_
#define QORN_GATEWAY_MAINTENANCE_BACKUP_H_

#include <ostream>

#include "gateway/maintenance/options.h"

namespace gateway {

// Writes a copy of the database to options.file. One line on `out` says what it holds, or one on
// `err` why there is none. Returns the exit status.
int RunBackup(const MaintenanceOptions& options, std::ostream& out, std::ostream& err);

}  // namespace gateway

#endif  // QORN_GATEWAY_MAINTENANCE_BACKUP_H_
