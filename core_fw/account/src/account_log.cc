#include "core_fw/account/src/account_log.h"

#include <string>

#include "base/logging.h"
#include "core_fw/account/src/account_result.h"

namespace account {
void Log(const tracked_objects::Location& from, int severity, std::string_view function,
         std::initializer_list<std::string_view> parts) {
  if (!LogAdmits(severity)) return;
  std::string text = " #account#";
  text.append(function).append("#  ");
  for (std::string_view part : parts) text.append(part);
  logging::LogMessage(from.file_name(), from.line_number(), severity).stream() << text;
}

namespace internal {

AccountResult RunOperation(const tracked_objects::Location& from, std::string_view name,
                           AccountResult (*call)(void*), void* body) noexcept {
  AccountResult result = kAccountFailure;
  try {
    if (LogAdmits(kSeverityProgress)) Log(from, kSeverityProgress, name, {name, "Start"});
    result = call(body);
  } catch (...) {
    result = kAccountFailure;
  }
  try {
    const int severity = result == kAccountSuccess ? kSeverityProgress : kSeverityFailure;
    if (LogAdmits(severity)) Log(from, severity, name, {name, "End", AccountResultMessage(result)});
  } catch (...) {  // The line is lost, the result holds.
  }
  return result;
}

}  // namespace internal
}  // namespace account
