#ifndef QORN_DEVCLOUD_SERVICES_REQUEST_USER_H_
#define QORN_DEVCLOUD_SERVICES_REQUEST_USER_H_

#include <string>

#include "devcloud/http/recorded_request.h"
#include "devcloud/services/accounts.h"

namespace devcloud {

// The ID of the user that a request is for: who signs in, whose code or token it exchanges, or whom
// it names to the portal, proven or not. A GUID without an account is returned as it is, such as
// "qornsystem". "" if the request names nobody.
std::string UserOf(const Accounts& accounts, const RecordedRequest& request);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_SERVICES_REQUEST_USER_H_
