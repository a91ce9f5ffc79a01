#ifndef QORN_DEVCLOUD_FAULTS_FAULT_JSON_H_
#define QORN_DEVCLOUD_FAULTS_FAULT_JSON_H_

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "devcloud/faults/fault.h"

namespace devcloud {

// Whether this is {"kind": "refuse"}. That is no fault of a request: it closes the ports, whatever
// the list of faults holds.
bool IsRefusal(const nlohmann::json& value);

// Reads a JSON object whose members are named as those of Fault. "kind" is required, and is one of
// "status", "body", "raw", "reset_after", "truncate_after", "stall", "drip" and "redirect". False,
// with one line in `error`, for anything else.
bool ParseFault(const nlohmann::json& value, Fault* fault, std::string* error);

// The kind's name in JSON.
const char* NameOf(Fault::Kind kind);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_FAULTS_FAULT_JSON_H_
