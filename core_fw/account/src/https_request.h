// The component's way to the network: one synchronous HTTP(S) request through libcurl.
#ifndef QORN_CORE_FW_ACCOUNT_SRC_HTTPS_REQUEST_H_
#define QORN_CORE_FW_ACCOUNT_SRC_HTTPS_REQUEST_H_

#include <cstdint>
#include <string>
#include <vector>

namespace account {

// How an exchange ended.
enum HttpResult : std::uint8_t {
  kHttpOk = 1,              // status 200
  kHttpNoContent = 2,       // 204
  kHttpBadRequest = 3,      // 400
  kHttpForbidden = 4,       // 403
  kHttpNotFound = 5,        // 404
  kHttpOtherStatus = 6,     // any other, or none
  kHttpTransportError = 7,  // the transfer failed
};

// libcurl's global state; each start needs its stop. Start it before the first thread that may
// send a request.
void StartTransport();
void StopTransport();

// Sends one request and waits for its end: five seconds at most to connect, no limit after that.
// `headers` are whole lines, sent in their order; `post` other than 0 sends `body` with POST.
// Returns all that came: the header blocks of every answer of a chain of redirects, then the last
// body. Empty when the transfer failed. `result` stays as it is when libcurl gives no handle.
// Any thread; calls share nothing. Certificates are deliberately not checked when the URL holds
// "https".
std::string SendRequest(const std::vector<std::string>& headers, const std::string& url,
                        unsigned post, const std::string& body, HttpResult* result);

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_HTTPS_REQUEST_H_
