#ifndef QORN_DEVCLOUD_CONTROL_H_
#define QORN_DEVCLOUD_CONTROL_H_

#include <functional>

#include "devcloud/accounts.h"
#include "devcloud/clock.h"
#include "devcloud/devices.h"
#include "devcloud/fault_list.h"
#include "devcloud/request_log.h"
#include "devcloud/router.h"

namespace devcloud {

// What the page and the API show and change.
struct ControlContext {
  const Accounts& accounts;
  const Devices& devices;
  RequestLog& log;
  FaultList& faults;
  Clock& clock;
  std::function<void()> clear_faults;
  std::function<void(bool)> refuse_connections;
};

// Whether the request belongs to the page or the API: it is then neither recorded nor met by
// faults.
bool IsControlRequest(const RecordedRequest& request);

// Adds the page and the API to the router. The context is borrowed.
//   GET /                  users, devices and the latest requests, as a page that renews itself
//   GET /api/state         {"users": [...], "devices": [...], "faults": [...]}, without any token
//   GET /api/requests      what was recorded, with the raw bytes as "raw_base64"
//   DELETE /api/requests   forgets what was recorded
//   POST /api/faults       one fault (see fault_json.h); {"kind":"refuse"} closes the cloud's ports
//   DELETE /api/faults     ends every fault, and opens the ports again
//   POST /api/clock        {"advance_seconds": N} moves the clock of codes and tokens
void AddControlRoutes(const ControlContext& context, Router* router);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_CONTROL_H_
