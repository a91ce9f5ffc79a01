#include "core_fw/account/src/account_operation.h"

#include "core_fw/account/src/account_log.h"
#include "core_fw/account/src/account_result.h"

namespace account {
namespace internal {

AccountResult RunOperation(const tracked_objects::Location& from, std::string_view name,
                           AccountResult (*call)(void*), void* body) noexcept {
  AccountResult result = kAccountFailure;
  try {
    // Asked first because session checks are called so often: below the log level they do not even
    // build the list of parts.
    if (LogAdmits(kSeverityProgress)) Log(from, kSeverityProgress, name, {name, "Start"});
    result = call(body);
  } catch (...) {
    result = kAccountFailure;
  }
  // A second block, because the operation must return what it did even if its last line fails.
  try {
    const int severity = result == kAccountSuccess ? kSeverityProgress : kSeverityFailure;
    if (LogAdmits(severity)) Log(from, severity, name, {name, "End", AccountResultMessage(result)});
  } catch (...) {  // The line is lost; the result stands.
  }
  return result;
}

}  // namespace internal
}  // namespace account
