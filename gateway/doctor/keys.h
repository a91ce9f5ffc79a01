// The keys of the configuration: what each means and what is suspicious in its value.
#ifndef QORN_GATEWAY_DOCTOR_KEYS_H_
#define QORN_GATEWAY_DOCTOR_KEYS_H_

#include <string>
#include <vector>

#include "gateway/host/finding.h"

namespace gateway {

struct KeyRule {
  const char* name;
  const char* meaning;  // of a value with which nothing is wrong
  // What a missing key and an empty value mean.
  Severity absent_severity;
  const char* absent;
  Severity empty_severity;
  const char* empty;
  // One of the eleven keys that the component reads in this order; it stops at the first that is
  // missing or empty.
  bool in_order;
  bool secret;
  // Looks at a value that is not empty.
  void (*judge)(const std::string& value, Finding* finding);
};

// The component's.
const std::vector<KeyRule>& KeyRules();
// The host's own, none of which has to be there.
const std::vector<KeyRule>& HostKeyRules();

// The known key that `name` was most likely meant to be; "" for none that is near.
std::string NearestKey(const std::string& name);

}  // namespace gateway

#endif  // QORN_GATEWAY_DOCTOR_KEYS_H_
