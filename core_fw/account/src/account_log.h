// The component's log lines, " #account#FUNCTION#  TEXT". They are written only if both the
// platform's minimum level and the component's own level admit them. A line never contains a token,
// a secret, a password or an authorisation code.
#ifndef QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_LOG_H_
#define QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_LOG_H_

#include <atomic>
#include <initializer_list>
#include <string_view>

#include "base/location.h"
#include "base/logging.h"

namespace account {

inline constexpr int kSeverityProgress = 2;
inline constexpr int kSeverityFailure = 4;

namespace internal {
inline std::atomic<int> g_component_log_level{2};
}  // namespace internal

// Sets the component's own level, which is 2 when the library is loaded. Any thread.
inline void SetComponentLogLevel(int level) {
  internal::g_component_log_level.store(level, std::memory_order_relaxed);
}

// Whether a line of this severity would be written.
inline bool LogAdmits(int severity) {
  return internal::g_component_log_level.load(std::memory_order_relaxed) <= severity &&
         logging::GetMinLogLevel() <= severity;
}

// Writes one line made of `parts`, if both levels admit its severity. Any thread. A log handler may
// call the service, so no lock is held here; the store's failures are the only exception.
void Log(const tracked_objects::Location& from, int severity, std::string_view function,
         std::initializer_list<std::string_view> parts);

inline void LogProgress(const tracked_objects::Location& from, std::string_view function,
                        std::string_view text) {
  Log(from, kSeverityProgress, function, {text});
}

inline void LogFailure(const tracked_objects::Location& from, std::string_view function,
                       std::string_view text) {
  Log(from, kSeverityFailure, function, {text});
}

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_LOG_H_
