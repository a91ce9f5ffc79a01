// What a gateway counts about itself. The component libqorn_metrics.so does it, and hands out this
// interface under the name "metrics_interface". The library that writes Prometheus's format is in
// memory only where that component is loaded.
#ifndef QORN_GATEWAY_METRICS_METRICS_H_
#define QORN_GATEWAY_METRICS_METRICS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "core_fw/account/include/account_manager.h"

namespace gateway {

inline constexpr char kMetricsInterface[] = "metrics_interface";

// Why a call from another process was refused.
enum class Refusal { kNoRight, kTooManyCalls, kBadArguments, kUnknownCaller, kStopping };

// Thread-safe. The component owns it.
class Metrics {
 public:
  // What only the host knows.
  struct HostState {
    size_t open_sessions = 0;
    std::optional<uint64_t> database_bytes = {};  // none while there is no such file
    std::optional<uint64_t> free_bytes = {};      // where the database lies; none when not known
    std::optional<size_t> sign_in_needed = {};    // users; none when no tokens are kept fresh
  };

  // Forwards to the account interface of the other components, and counts the calls. Loaded before
  // them, the component hands it out as "account_interface", too.
  virtual AccountManager* counted_accounts() = 0;
  // The account interface behind it.
  virtual AccountManager* accounts() = 0;

  virtual void CountRefusal(Refusal refusal) = 0;

  // Everything in Prometheus's text format.
  virtual std::string Text(const HostState& state) const = 0;

 protected:
  ~Metrics() = default;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_METRICS_METRICS_H_
