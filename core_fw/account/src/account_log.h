// The component's log lines: " #account#FUNCTION#  TEXT", gated by the platform's minimum level
// and the component's own. A line never holds a token, a secret, a password or an authorisation
// code.
#ifndef QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_LOG_H_
#define QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_LOG_H_

#include <atomic>
#include <initializer_list>
#include <string_view>

#include "base/location.h"
#include "base/logging.h"
#include "core_fw/account/include/account_manager.h"

namespace account {

inline constexpr int kSeverityProgress = 2;
inline constexpr int kSeverityFailure = 4;

namespace internal {
inline std::atomic<int> g_component_log_level{2};
}  // namespace internal

// The component's own level, 2 at load. Any thread.
inline void SetComponentLogLevel(int level) {
  internal::g_component_log_level.store(level, std::memory_order_relaxed);
}

// Whether a line of this severity would be written.
inline bool LogAdmits(int severity) {
  return internal::g_component_log_level.load(std::memory_order_relaxed) <= severity &&
         logging::GetMinLogLevel() <= severity;
}

// Writes one line made of `parts` if both levels are at most its severity.
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

namespace internal {
AccountResult RunOperation(const tracked_objects::Location& from, std::string_view name,
                           AccountResult (*call)(void*), void* body) noexcept;
}  // namespace internal

// The shape that interface operations share: the "Start" line, the body, the "End" line with the
// result's message. The last catch stands here: whatever the body throws becomes kAccountFailure.
template <typename Body>
AccountResult RunOperation(const tracked_objects::Location& from, std::string_view name,
                           Body body) noexcept {
  return internal::RunOperation(
      from, name, [](void* data) -> AccountResult { return (*static_cast<Body*>(data))(); }, &body);
}

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_LOG_H_
