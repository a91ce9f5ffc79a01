#include "core_fw/account/src/account_log.h"

#include <string>

#include "base/logging.h"

namespace account {

void Log(const tracked_objects::Location& from, int severity, std::string_view function,
         std::initializer_list<std::string_view> parts) {
  if (!LogAdmits(severity)) return;
  std::string text = " #account#";
  text.append(function).append("#  ");
  for (std::string_view part : parts) text.append(part);
  logging::LogMessage(from.file_name(), from.line_number(), severity).stream() << text;
}

}  // namespace account
