// Families of samples as they are handed to prometheus-cpp.
#ifndef QORN_GATEWAY_METRICS_FAMILIES_H_
#define QORN_GATEWAY_METRICS_FAMILIES_H_

#include <prometheus/metric_family.h>

#include <string>
#include <vector>

namespace gateway {

using Labels = std::vector<prometheus::ClientMetric::Label>;

inline prometheus::MetricFamily MakeFamily(const std::string& name, const std::string& help,
                                           prometheus::MetricType type) {
  return {.name = name, .help = help, .type = type, .metric = {}};
}

// Adds a sample to a family of counters or gauges.
inline void AddSample(const Labels& labels, double value, prometheus::MetricFamily* family) {
  prometheus::ClientMetric& sample = family->metric.emplace_back();
  sample.label = labels;
  if (family->type == prometheus::MetricType::Counter) {
    sample.counter.value = value;
  } else {
    sample.gauge.value = value;
  }
}

}  // namespace gateway

#endif  // QORN_GATEWAY_METRICS_FAMILIES_H_
