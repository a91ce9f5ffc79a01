#ifndef QORN_GATEWAY_DOCTOR_CONFIGURATION_H_
#define QORN_GATEWAY_DOCTOR_CONFIGURATION_H_

#include <map>
#include <optional>
#include <string>

#include "gateway/host/finding.h"

namespace gateway {

// Values by key. Of a key that stands twice the first value counts, as in the gateway.
using ConfigValues = std::map<std::string, std::string>;

// "" for a key that is absent.
std::string ConfigValue(const ConfigValues& config, const std::string& key);

// Examines the file and each key. `config` stays empty when the file cannot be read.
Findings ExamineConfig(const std::string& file, std::optional<ConfigValues>* config);

}  // namespace gateway

#endif  // QORN_GATEWAY_DOCTOR_CONFIGURATION_H_
