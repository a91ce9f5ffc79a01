#ifndef QORN_GATEWAY_MAINTENANCE_RETIRE_H_
#define QORN_GATEWAY_MAINTENANCE_RETIRE_H_

#include <ostream>

#include "gateway/maintenance/options.h"

namespace gateway {

// Removes what this gateway knows of people, before it is given away: each user from the cloud,
// unless options.local, then all from the database, then the files that name them. Stops before the
// database is emptied if the cloud keeps somebody, since only a stored user can be removed there;
// run it again. Lines on `out` say what was removed, lines on `err` what was not. Returns the exit
// status.
int RunRetire(const MaintenanceOptions& options, std::ostream& out, std::ostream& err);

}  // namespace gateway

#endif  // QORN_GATEWAY_MAINTENANCE_RETIRE_H_
