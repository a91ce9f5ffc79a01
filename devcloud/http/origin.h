#ifndef QORN_DEVCLOUD_HTTP_ORIGIN_H_
#define QORN_DEVCLOUD_HTTP_ORIGIN_H_

#include <string>

#include "devcloud/http/recorded_request.h"

namespace devcloud {

// Whether the Host line names this machine and the port that the request came to. The machine's
// names are "localhost", every loopback address and `address`, an IP address. If that stands for
// all addresses (0.0.0.0 or ::), any IP address and any name without a dot will do, with any port:
// a container does not know by which name and port it is reached.
//
// Anybody can let a name of their own resolve to 127.0.0.1 (DNS rebinding). A page loaded by that
// name counts as the cloud's own to a browser, which then lets it read every answer; only the Host
// line shows the difference. An IP address is not resolved, and strangers cannot register a name
// without a dot.
bool NamesThisMachine(const RecordedRequest& request, const std::string& address);

// Whether a page of another site sent the request: its Origin line names something other than the
// host that the request was sent to. A page loaded by a host name with a dot counts as foreign too,
// as any such name may be somebody else's. Programs send no Origin line.
bool IsFromForeignPage(const RecordedRequest& request);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_ORIGIN_H_
