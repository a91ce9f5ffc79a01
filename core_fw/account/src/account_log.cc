#include "core_fw/account/src/account_log.h"

#include <atomic>
#include <string>

#include "base/logging.h"
#include "core_fw/account/src/account_result.h"

namespace account {
namespace {

std::atomic<int> g_component_log_level{2};

bool Admits(int severity) {
  return logging::GetMinLogLevel() <= severity &&
         g_component_log_level.load(std::memory_order_relaxed) <= severity;
}

}  // namespace

void SetComponentLogLevel(int level) {
  g_component_log_level.store(level, std::memory_order_relaxed);
}

void Log(const tracked_objects::Location& from, int severity, std::string_view function,
         std::initializer_list<std::string_view> parts) {
  if (!Admits(severity)) return;
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
    Log(from, kSeverityProgress, name, {name, "Start"});
    result = call(body);
  } catch (...) {
    result = kAccountFailure;
  }
  try {
    Log(from, result == kAccountSuccess ? kSeverityProgress : kSeverityFailure, name,
        {name, "End", AccountResultMessage(result)});
  } catch (...) {  // The line is lost, the result holds.
  }
  return result;
}

}  // namespace internal
}  // namespace account
