#ifndef QORN_DEVCLOUD_SERVICES_PORTAL_H_
#define QORN_DEVCLOUD_SERVICES_PORTAL_H_

#include "devcloud/http/http_text.h"
#include "devcloud/http/recorded_request.h"
#include "devcloud/services/accounts.h"
#include "devcloud/services/devices.h"
#include "devcloud/services/nts_servers.h"

namespace devcloud {

// The user portal's four requests.
//
// The line "x-dpx-userId" names the caller by GUID, and "oauth_token" in the Authorization line
// must be a valid access token of that user. The system account "qornsystem" has no token and sends
// an empty one. Any other caller gets status 403.
//
// A body that is not a `dpxDevice` document, or lacks a value, gets status 400. Every answer is
// XML; a refusal is a `response` whose `result` gives the reason.
//
// Thread-safe. The constructor borrows accounts and devices.
class Portal {
 public:
  Portal(const Accounts& accounts, Devices& devices, NtsServers nts);

  // Registers the caller on a gateway, which becomes known if it was not.
  Answer AddUserDevice(const RecordedRequest& request);

  // Removes anybody's registration on a gateway, for any signed-in user and the system account. If
  // there is no such registration, the status is 200 and the result "not registered".
  Answer DeleteUserDevice(const RecordedRequest& request);

  // Lists the gateways on which the caller is registered, or all of them for the system account.
  Answer GetUserDevice(const RecordedRequest& request);

  // Tells the addresses of the servers for NAT traversal.
  Answer GetNtsServerInfo(const RecordedRequest& request);

 private:
  // The caller's GUID, or "" if the request does not prove it.
  std::string AuthenticatedUser(const RecordedRequest& request) const;

  const Accounts& accounts_;
  Devices& devices_;
  const NtsServers nts_;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_SERVICES_PORTAL_H_
