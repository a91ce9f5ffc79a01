#ifndef QORN_DEVCLOUD_CONTROL_STATE_JSON_H_
#define QORN_DEVCLOUD_CONTROL_STATE_JSON_H_

#include <string>
#include <vector>

#include "devcloud/control/control_context.h"

namespace devcloud {

// Users with their codes and tokens, devices, faults, URLs and clock, as one JSON object. Codes and
// tokens are shortened. A negative indent gives a single line.
std::string StateJson(const ControlContext& context, int indent);

// A single line: {"from_start": B, "oldest": N, "requests": [...]}.
std::string RequestChangesJson(const RequestChanges& changes);

// An array of requests with all their bytes.
std::string RequestsJson(const std::vector<RecordedRequest>& requests);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_CONTROL_STATE_JSON_H_
