// The component that counts: in front of the account component it counts all calls of the process,
// behind it those alone that ask for its own interface.
#include "core_fw/runtime/component.h"

#include <prometheus/text_serializer.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <ctime>
#include <fstream>
#include <new>
#include <optional>
#include <sstream>
#include <utility>

#include "gateway/metrics/counted_accounts.h"
#include "gateway/metrics/families.h"
#include "gateway/metrics/metrics.h"
#include "gateway/metrics/operation_counts.h"
#include "gateway/operations/event_listener.h"
#include "gateway/operations/events.h"
#include "runtime/runtime.h"

namespace gateway {
namespace {

using prometheus::MetricFamily;
using prometheus::MetricType;

constexpr char kAccountInterface[] = "account_interface";

struct RefusalName {
  Refusal refusal;
  const char* name;
};
constexpr RefusalName kRefusals[] = {{Refusal::kNoRight, "no_right"},
                                     {Refusal::kTooManyCalls, "too_many_calls"},
                                     {Refusal::kBadArguments, "bad_arguments"},
                                     {Refusal::kUnknownCaller, "unknown_caller"},
                                     {Refusal::kStopping, "stopping"}};

double SecondsSinceEpoch() {
  // Not std::chrono's system clock, which has 32 bits in the C++ library of Debian's armhf.
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

double ResidentBytes() {
  uint64_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages >> pages;
  return static_cast<double>(pages) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

// Set while this thread asks the runtime, which then asks this component, too.
thread_local bool t_asks_others = false;

class MetricsComponent;
MetricsComponent* g_component = nullptr;  // Touched by the runtime's thread only.

class MetricsComponent : public Component, public Metrics {
 public:
  MetricsComponent() = default;
  ~MetricsComponent() override { g_component = nullptr; }

  const char* GetName() override { return "metrics"; }
  bool QueryInterface(const std::string& name, void** out) override;
  bool Start() override;
  bool Finalize() override;

  AccountManager* counted_accounts() override { return &counted_; }
  AccountManager* accounts() override { return counted_.accounts(); }
  void CountRefusal(Refusal refusal) override { ++refusals_[static_cast<size_t>(refusal)]; }
  std::string Text(const HostState& state) const override;

 private:
  // False when no other component has the account interface.
  bool FindAccounts();
  void CollectEvents(std::vector<MetricFamily>* families) const;
  void CollectRefusals(std::vector<MetricFamily>* families) const;
  void CollectGauges(const HostState& state, std::vector<MetricFamily>* families) const;

  const double started_ = SecondsSinceEpoch();
  OperationCounts operations_;
  CountedAccounts counted_{&operations_};
  // In the order of EventKinds(), whose types begin with 1.
  std::array<std::atomic<uint64_t>, kEventAccountSignOut> events_{};
  std::array<std::atomic<uint64_t>, std::size(kRefusals)> refusals_{};
  std::optional<EventListener> listener_;
};

bool MetricsComponent::QueryInterface(const std::string& name, void** out) {
  if (t_asks_others || (name != kAccountInterface && name != kMetricsInterface)) return false;
  if (!FindAccounts()) return false;
  *out = name == kAccountInterface ? static_cast<void*>(counted_accounts())
                                   : static_cast<void*>(static_cast<Metrics*>(this));
  return true;
}

bool MetricsComponent::FindAccounts() {
  if (accounts() != nullptr) return true;
  void* found = nullptr;
  t_asks_others = true;
  static_cast<runtime::Runtime*>(runtime)->QueryInterface(kAccountInterface, &found);
  t_asks_others = false;
  // Threads that ask at the same time find the same.
  if (found != nullptr) counted_.set_accounts(static_cast<AccountManager*>(found));
  return found != nullptr;
}

bool MetricsComponent::Start() {
  listener_.emplace(
      [this](const SeenEvent& event) { ++events_[static_cast<size_t>(event.type) - 1]; });
  return true;
}

bool MetricsComponent::Finalize() {
  listener_.reset();
  return true;
}

std::string MetricsComponent::Text(const HostState& state) const {
  std::vector<MetricFamily> families;
  operations_.Collect(&families);
  CollectEvents(&families);
  CollectRefusals(&families);
  CollectGauges(state, &families);
  std::ostringstream text;
  prometheus::TextSerializer().Serialize(text, families);
  return text.str();
}

void MetricsComponent::CollectEvents(std::vector<MetricFamily>* families) const {
  families->push_back(
      MakeFamily("qorn_events_total", "Events that were published, by name.", MetricType::Counter));
  for (const EventKind& kind : EventKinds()) {
    AddSample({{"event", kind.signal}},
              static_cast<double>(events_[static_cast<size_t>(kind.type) - 1]), &families->back());
  }
}

void MetricsComponent::CollectRefusals(std::vector<MetricFamily>* families) const {
  families->push_back(MakeFamily("qorn_refused_calls_total",
                                 "Calls from D-Bus that were refused, by reason.",
                                 MetricType::Counter));
  for (const auto& [refusal, name] : kRefusals) {
    AddSample({{"reason", name}}, static_cast<double>(refusals_[static_cast<size_t>(refusal)]),
              &families->back());
  }
}

void MetricsComponent::CollectGauges(const HostState& state,
                                     std::vector<MetricFamily>* families) const {
  const auto add = [families](const char* name, const char* help, double value) {
    families->push_back(MakeFamily(name, help, MetricType::Gauge));
    AddSample({}, value, &families->back());
  };
  add("qorn_open_sessions", "Sessions that are open.", static_cast<double>(state.open_sessions));
  if (state.database_bytes) {
    add("qorn_database_size_bytes", "Size of the database's file. Absent while there is none.",
        static_cast<double>(*state.database_bytes));
  }
  if (state.free_bytes) {
    add("qorn_storage_free_bytes", "Free space of the file system that the database lies on.",
        static_cast<double>(*state.free_bytes));
  }
  if (state.sign_in_needed) {
    add("qorn_sign_in_needed_users",
        "Users that must sign in with a code. Absent when no tokens are kept fresh.",
        static_cast<double>(*state.sign_in_needed));
  }
  add("process_resident_memory_bytes", "Resident memory of the gateway.", ResidentBytes());
  add("process_start_time_seconds", "When the gateway started, in seconds since 1970.", started_);
}

}  // namespace
}  // namespace gateway

extern "C" __attribute__((visibility("default"))) Component* GetComponent();

Component* GetComponent() {
  try {
    if (gateway::g_component == nullptr) gateway::g_component = new gateway::MetricsComponent;
  } catch (...) {  // Out of memory.
  }
  return gateway::g_component;
}
