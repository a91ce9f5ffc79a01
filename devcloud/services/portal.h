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
// Who asks stands in the line "x-dpx-userId" (a GUID), and "oauth_token" of the Authorization line
// must be a current access token of that user. The system account "qornsystem" has no token and
// asks with an empty one. Anyone else gets status 403.
//
// A body that is no `dpxDevice` document, or lacks a value, gets status 400. Every answer is XML;
// a refusal is a `response` whose `result` says why.
//
// Thread-safe. What the constructor is given is borrowed, except for the server addresses.
class Portal {
 public:
  Portal(const Accounts& accounts, Devices& devices, NtsServers nts);

  // Registers the user who asks on a gateway; an unknown gateway becomes known.
  Answer AddUserDevice(const RecordedRequest& request);

  // Ends anyone's registration on a gateway: any signed-in user may ask, and the system account. A
  // registration that is not there gets status 200 with the result "not registered".
  Answer DeleteUserDevice(const RecordedRequest& request);

  // The gateways that the user who asks is registered on; all of them for the system account.
  Answer GetUserDevice(const RecordedRequest& request);

  Answer GetNtsServerInfo(const RecordedRequest& request);

 private:
  // The GUID of the user who asks; "" when it is not proved.
  std::string ActingUser(const RecordedRequest& request) const;

  const Accounts& accounts_;
  Devices& devices_;
  const NtsServers nts_;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_SERVICES_PORTAL_H_
