#include "gateway/host/storage_check.h"

#include "gateway/host/database_examination.h"

namespace gateway {

std::vector<std::string> FindStorageFaults(const std::string& database) {
  std::vector<std::string> lines;
  if (database.empty()) return lines;
  for (const Finding& finding : ExamineDatabaseQuickly(database)) {
    // Warnings are for the doctor: the gateway works with them, and each start would repeat them.
    if (finding.severity != Severity::kBad) continue;
    lines.push_back(finding.name + " " + finding.value.value_or(database) + ": " + finding.advice);
  }
  return lines;
}

}  // namespace gateway
