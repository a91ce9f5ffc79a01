#ifndef QORN_DEVCLOUD_FAULTS_SCENARIO_H_
#define QORN_DEVCLOUD_FAULTS_SCENARIO_H_

#include <string>
#include <vector>

#include "devcloud/faults/fault.h"

namespace devcloud {

// The faults with which the cloud starts, in their order.
struct Scenario {
  std::vector<Fault> faults;
  bool is_refusing = false;  // connections are refused as well
};

// Reads a file with a JSON array of faults, each as the API takes it. False, with one line in
// `error`, if it cannot be read or an element is no fault.
bool ReadScenario(const std::string& path, Scenario* scenario, std::string* error);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_FAULTS_SCENARIO_H_
