// control/ is how tests and the page steer and watch the cloud: the API under /api/, the live
// stream and the log of requests.
#ifndef QORN_DEVCLOUD_CONTROL_CONTROL_H_
#define QORN_DEVCLOUD_CONTROL_CONTROL_H_

#include "devcloud/control/control_context.h"
#include "devcloud/http/recorded_request.h"
#include "devcloud/http/router.h"

namespace devcloud {

// Whether the request is for the page or the API, which are not recorded and have no faults.
bool IsControlRequest(const RecordedRequest& request);

// Adds the page and the API to the router. Context and router are borrowed.
// A request that changes something gets status 403 if a page of another site sent it.
//   GET /                  the page; its files are under /page/
//   GET /api/state         users, devices, faults and URLs; codes and tokens are shortened
//   POST /api/codes        {"user": ID} signs in: {"code": "..."}
//   GET /api/requests      the recorded requests, their bytes as "raw_base64" and those of the
//                          answer as "answer_base64", which is null until there is one
//   DELETE /api/requests   deletes the recorded requests
//   GET /api/exchange?number=N&part=request   the bytes of a request; part=answer: of its answer
//   POST /api/faults       adds a fault (see fault_json.h) and answers its number;
//                          {"kind":"refuse"} closes the HTTP and HTTPS ports
//   DELETE /api/faults     removes every fault and reopens the ports; ?number=N removes one, and
//                          ?kind=refuse only reopens the ports
//   POST /api/clock        {"advance_seconds": N} advances the clock of codes and tokens
//   GET /api/settings      the settings (see settings.h)
//   POST /api/settings     changes those that the body names; answers with all of them
//   POST /api/reset        makes the cloud what it is after a start with the same options and
//   without
//                          a state file; stalled requests end without an answer
//   GET /api/routes        the routes of the router under /api/
//   GET /api/openapi.json  openapi.json, which describes all these
// GET /api/events is LiveStream's.
void AddControlRoutes(const ControlContext& context, Router* router);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_CONTROL_CONTROL_H_
