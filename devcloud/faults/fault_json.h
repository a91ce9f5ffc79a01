#ifndef QORN_DEVCLOUD_FAULTS_FAULT_JSON_H_
#define QORN_DEVCLOUD_FAULTS_FAULT_JSON_H_

#include <string>

#include "devcloud/faults/fault.h"

namespace devcloud {

// Reads an object with the members of Fault by their names there; "kind" is one of "status",
// "body", "raw", "reset_after", "truncate_after", "stall", "drip" and "redirect", and may not be
// left out. False, with one line in `error`, for anything else.
bool ParseFault(const std::string& json, Fault* fault, std::string* error);

// The name that ParseFault reads.
const char* NameOf(Fault::Kind kind);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_FAULTS_FAULT_JSON_H_
