#ifndef QORN_GATEWAY_MAINTENANCE_SUPPORT_REPORT_H_
#define QORN_GATEWAY_MAINTENANCE_SUPPORT_REPORT_H_

#include <ostream>

#include "gateway/maintenance/options.h"

namespace gateway {

// Writes one text for a support case to options.file: versions, configuration, the doctor's
// findings, what a running gateway tells, sizes of the database, and the ends of log and audit;
// without secrets, tokens, IDs, peer IDs and addresses. Returns the exit status:
// kExitStillPrivate, and nothing is written, if one of those is still in it.
int RunReport(const MaintenanceOptions& options, std::ostream& out, std::ostream& err);

}  // namespace gateway

#endif  // QORN_GATEWAY_MAINTENANCE_SUPPORT_REPORT_H_
