// How often each operation gave which result, and how long it took.
#ifndef QORN_GATEWAY_METRICS_OPERATION_COUNTS_H_
#define QORN_GATEWAY_METRICS_OPERATION_COUNTS_H_

#include <prometheus/histogram.h>
#include <prometheus/metric_family.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string_view>
#include <vector>

#include "core_fw/account/include/account_manager.h"
#include "gateway/operations/operations.h"

namespace gateway {

// Thread-safe. Counting allocates nothing.
class OperationCounts {
 public:
  using Clock = std::chrono::steady_clock;

  OperationCounts();

  // The place of the operation of this name, which exists, in Operations().
  static size_t IndexOf(std::string_view name);

  void Add(size_t operation, int result, Clock::duration time);

  // The account server or the User Portal has answered. Add notes the results that show it.
  void NoteCloudAnswer() { cloud_answered_ = Clock::now(); }

  void Collect(std::vector<prometheus::MetricFamily>* families) const;

 private:
  // One for each code, and the first for all numbers that are none.
  using Results = std::array<std::atomic<uint64_t>, kAccountFailure + 1>;
  struct Counts {
    explicit Counts(const Operation& counted);

    const Operation& operation;
    Results results{};
    prometheus::Histogram seconds;
  };

  prometheus::MetricFamily CollectResults() const;
  prometheus::MetricFamily CollectSeconds() const;

  std::deque<Counts> counts_;  // in the order of Operations()
  std::atomic<Clock::time_point> cloud_answered_{};
};

}  // namespace gateway

#endif  // QORN_GATEWAY_METRICS_OPERATION_COUNTS_H_
