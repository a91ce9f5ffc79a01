// services/ is what a gateway sees of a cloud: the account server and the user portal, with the
// accounts, tokens and devices behind them and the file that keeps those.
#ifndef QORN_DEVCLOUD_SERVICES_ACCOUNT_SERVER_H_
#define QORN_DEVCLOUD_SERVICES_ACCOUNT_SERVER_H_

#include "devcloud/http/http_text.h"
#include "devcloud/http/recorded_request.h"
#include "devcloud/services/accounts.h"

namespace devcloud {

// GET /authorize: the sign-in page.
Answer ShowSignIn(const RecordedRequest& request);

// POST /authorize with the URL-encoded form "user=ID". Answers {"code":"..."}, or a page with the
// code if the client accepts text/html. Refuses an empty user ID, and a form that a page of another
// site sent, with invalid_request.
Answer Authorize(Accounts& accounts, const RecordedRequest& request);

// POST /token, the token endpoint of RFC 6749 for the grants authorization_code and refresh_token.
// Values are not decoded, since gateways do not encode them. Answers with access_token,
// refresh_token, token_type, expires_in and the account's GUID as userId, or with an error as in
// section 5.2 and status 400.
Answer IssueTokens(Accounts& accounts, const RecordedRequest& request);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_SERVICES_ACCOUNT_SERVER_H_
