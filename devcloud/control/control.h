// control/ is how tests and the page steer and watch the cloud: the API under /api/, the live
// stream and the log of requests.
#ifndef QORN_DEVCLOUD_CONTROL_CONTROL_H_
#define QORN_DEVCLOUD_CONTROL_CONTROL_H_

#include "devcloud/control/control_context.h"
#include "devcloud/http/recorded_request.h"
#include "devcloud/http/router.h"

namespace devcloud {

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
// GET /api/events is LiveStream's.
void AddControlRoutes(const ControlContext& context, Router* router);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_CONTROL_CONTROL_H_
