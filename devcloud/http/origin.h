#ifndef QORN_DEVCLOUD_HTTP_ORIGIN_H_
#define QORN_DEVCLOUD_HTTP_ORIGIN_H_

#include "devcloud/http/recorded_request.h"

namespace devcloud {

// Whether a web page that is not ours makes the request: it then has an Origin line that names
// something else than the host that it was sent to. A page of a host name with a dot is not ours
// either, since anybody's name can point at this machine; the page is opened by an IP address,
// "localhost" or another name without a dot. Programs send no Origin line.
bool IsOfForeignPage(const RecordedRequest& request);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_ORIGIN_H_
