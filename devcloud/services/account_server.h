// services/ is what a gateway sees of a cloud: the account server and the user portal, with the
// accounts, tokens and devices behind them and the file that keeps those.
#ifndef QORN_DEVCLOUD_SERVICES_ACCOUNT_SERVER_H_
#define QORN_DEVCLOUD_SERVICES_ACCOUNT_SERVER_H_

#include "devcloud/http/http_text.h"
#include "devcloud/http/recorded_request.h"
#include "devcloud/services/accounts.h"

namespace devcloud {

// GET /authorize: a page to sign in on.
Answer ShowSignIn(const RecordedRequest& request);

// POST /authorize with the URL-encoded form "user=ID". Answers {"code":"..."}, or a page with the
// code to a client that accepts text/html. An empty user ID gets invalid_request, and so does the
// form of another web page.
Answer Authorize(Accounts& accounts, const RecordedRequest& request);

// POST /token, the token endpoint of RFC 6749 for the grants authorization_code and refresh_token.
// Gateways encode no value of their form, so none is decoded. Success answers with access_token,
// refresh_token, token_type, expires_in and the account's GUID as userId; a refusal is section
// 5.2's 400 answer.
Answer IssueTokens(Accounts& accounts, const RecordedRequest& request);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_SERVICES_ACCOUNT_SERVER_H_
