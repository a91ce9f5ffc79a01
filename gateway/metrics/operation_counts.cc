#include "gateway/metrics/operation_counts.h"

#include <algorithm>
#include <cstring>

#include "gateway/metrics/families.h"
#include "gateway/operations/result_names.h"

namespace gateway {
namespace {

using prometheus::MetricFamily;
using prometheus::MetricType;

constexpr char kResultPrefix[] = "kAccount";
constexpr char kUndefined[] = "Undefined";

// From a look at a session, which takes microseconds, to a cloud that nearly does not answer.
const prometheus::Histogram::BucketBoundaries kSeconds = {1e-6, 1e-5, 1e-4, 1e-3, 0.01,
                                                          0.1,  0.5,  2.5,  10,   60};

bool IsKnownResult(const Operation& operation, size_t code) {
  // A state is a good answer, whatever its number.
  if (operation.results.empty()) return code == kAccountSuccess;
  return std::find(operation.results.begin(), operation.results.end(), static_cast<int>(code)) !=
         operation.results.end();
}

std::string ResultLabel(size_t code) {
  const char* const name = ResultName(static_cast<int>(code));
  return *name == '\0' ? kUndefined : name + std::strlen(kResultPrefix);
}

// Whether the operation can only have given this result after a server of the cloud had answered:
// by its success, or because it first exchanges a code for tokens and failed later.
bool ShowsCloudAnswer(const Operation& operation, int result) {
  if (operation.backend != Backend::kCloud) return false;
  if (result == kAccountSuccess) return true;
  const bool begins_with_exchange =
      std::strcmp(operation.name, "SignIn") == 0 || std::strcmp(operation.name, "CreateUser") == 0;
  return begins_with_exchange && result != kAccountZepServerFailure && result != kAccountFailure;
}

}  // namespace

OperationCounts::Counts::Counts(const Operation& counted) : operation(counted), seconds(kSeconds) {}

OperationCounts::OperationCounts() {
  for (const Operation& operation : Operations()) counts_.emplace_back(operation);
}

size_t OperationCounts::IndexOf(std::string_view name) {
  size_t index = 0;
  while (Operations()[index].name != name) ++index;
  return index;
}

void OperationCounts::Add(size_t operation, int result, Clock::duration time) {
  Counts& counts = counts_[operation];
  size_t code = result > 0 && result <= kAccountFailure ? static_cast<size_t>(result) : 0;
  if (counts.operation.results.empty()) code = kAccountSuccess;
  counts.results[code].fetch_add(1, std::memory_order_relaxed);
  counts.seconds.Observe(std::chrono::duration<double>(time).count());
  if (ShowsCloudAnswer(counts.operation, result)) NoteCloudAnswer();
}

MetricFamily OperationCounts::CollectResults() const {
  MetricFamily family = MakeFamily("qorn_operations_total",
                                   "Operations of the account interface that have ended, by name "
                                   "and result.",
                                   MetricType::Counter);
  for (const Counts& counts : counts_) {
    for (size_t code = 0; code < counts.results.size(); ++code) {
      const uint64_t count = counts.results[code];
      if (count == 0 && !IsKnownResult(counts.operation, code)) continue;
      AddSample({{"operation", counts.operation.name}, {"result", ResultLabel(code)}},
                static_cast<double>(count), &family);
    }
  }
  return family;
}

MetricFamily OperationCounts::CollectSeconds() const {
  MetricFamily family =
      MakeFamily("qorn_operation_duration_seconds",
                 "How long operations of the account interface took.", MetricType::Histogram);
  for (const Counts& counts : counts_) {
    family.metric.push_back(counts.seconds.Collect());
    family.metric.back().label = {{"operation", counts.operation.name}};
  }
  return family;
}

void OperationCounts::Collect(std::vector<MetricFamily>* families) const {
  families->push_back(CollectResults());
  families->push_back(CollectSeconds());
  const Clock::time_point answered = cloud_answered_;
  if (answered == Clock::time_point{}) return;
  families->push_back(MakeFamily(
      "qorn_cloud_last_answer_age_seconds",
      "Seconds since the result of an operation last showed that the account server or the User "
      "Portal had answered: CreateUser, RemoveUser, SignIn, AddFriendRequest, RemoveFriendRequest "
      "or RefreshAccessToken succeeded, CreateUser or SignIn failed after their code had been "
      "exchanged, or the account server refused a SignIn. Absent until then.",
      MetricType::Gauge));
  AddSample({}, std::chrono::duration<double>(Clock::now() - answered).count(), &families->back());
}

}  // namespace gateway
