#ifndef QORN_DEVCLOUD_CONTROL_H_
#define QORN_DEVCLOUD_CONTROL_H_

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "devcloud/accounts.h"
#include "devcloud/clock.h"
#include "devcloud/devices.h"
#include "devcloud/fault_list.h"
#include "devcloud/request_log.h"
#include "devcloud/router.h"

namespace devcloud {

struct Urls {
  std::string http, https, api;
};

// What the page and the API show and change.
struct ControlContext {
  const Urls& urls;
  Accounts& accounts;
  const Devices& devices;
  RequestLog& log;
  FaultList& faults;
  Clock& clock;
  const std::atomic<bool>& is_refusing;
  // Ends the fault of this number and lets the requests that it stalls go on; false when no such
  // fault is left.
  std::function<bool(std::uint64_t)> end_fault;
  std::function<void()> clear_faults;
  std::function<void(bool)> refuse_connections;
};

// Whether the request belongs to the page or the API: it is then neither recorded nor met by
// faults.
bool IsControlRequest(const RecordedRequest& request);

// Adds the page and the API to the router. The context is borrowed. What changes something is
// refused with status 403 when a web page of another origin asks.
//   GET /                  the page; its parts are under /page/
//   GET /api/state         users, devices, faults and URLs; codes and tokens are shortened
//   POST /api/codes        {"user": ID} signs in: {"code": "..."}
//   GET /api/requests      what was recorded, with the raw bytes as "raw_base64" and
//                          "answer_base64", which is null while there is no answer
//   DELETE /api/requests   forgets what was recorded
//   GET /api/exchange?number=N&part=request   the bytes of one request; part=answer: of its answer
//   POST /api/faults       one fault (see fault_json.h), answered with its number;
//                          {"kind":"refuse"} closes the cloud's ports
//   DELETE /api/faults     ends every fault, and opens the ports again; ?number=N ends one, and
//                          ?kind=refuse opens the ports alone
//   POST /api/clock        {"advance_seconds": N} moves the clock of codes and tokens
// GET /api/events is Live's.
void AddControlRoutes(const ControlContext& context, Router* router);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_CONTROL_H_
