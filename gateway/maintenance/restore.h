#ifndef QORN_GATEWAY_MAINTENANCE_RESTORE_H_
#define QORN_GATEWAY_MAINTENANCE_RESTORE_H_

#include <ostream>
#include <string>

#include "gateway/maintenance/archive.h"
#include "gateway/maintenance/options.h"

namespace gateway {

// Puts the database of an archive in the place of the one at `database`, while no gateway works in
// its folder. False, with a reason in `error`, if that is refused or fails; then the old one is
// still there.
bool RestoreDatabase(const std::string& archive, const std::string& database, Copy* copy,
                     std::string* error);

// Does so with the archive options.file. Lines on `out` say what was restored and what people have
// to do now, or one on `err` why nothing was. Returns the exit status.
int RunRestore(const MaintenanceOptions& options, std::ostream& out, std::ostream& err);

}  // namespace gateway

#endif  // QORN_GATEWAY_MAINTENANCE_RESTORE_H_
