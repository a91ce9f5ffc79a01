// The component's way to the network: one synchronous HTTP(S) request through libcurl.
#ifndef QORN_CORE_FW_ACCOUNT_SRC_HTTPS_REQUEST_H_
#define QORN_CORE_FW_ACCOUNT_SRC_HTTPS_REQUEST_H_

#include <cstdint>
#include <string>
#include <vector>

namespace account {

// The outcome of an exchange. Every value but kHttpOk is a failure to the callers.
enum HttpResult : std::uint8_t {
  kHttpOk = 1,              // status 200
  kHttpNoContent = 2,       // 204
  kHttpBadRequest = 3,      // 400
  kHttpForbidden = 4,       // 403
  kHttpNotFound = 5,        // 404
  kHttpOtherStatus = 6,     // any other, or none
  kHttpTransportError = 7,  // the transfer failed
};

// libcurl's global state; each start needs a stop. Not thread-safe: call StartTransport before the
// first thread that may send a request.
void StartTransport();
void StopTransport();

// Sends one request and blocks until it is complete: at most five seconds to connect, no limit
// after that. `headers` are complete lines and are sent in this order. If `post` is not 0, `body`
// is sent with POST; otherwise the request is a GET.
//
// Returns everything that was received: the header blocks of every response in a chain of
// redirects, then the last body. Empty if the transfer failed. `result` is not written if libcurl
// cannot make a handle. Any thread; calls share no state. Certificates are deliberately not checked
// if the URL contains "https".
std::string SendRequest(const std::vector<std::string>& headers, const std::string& url,
                        unsigned post, const std::string& body, HttpResult* result);

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_HTTPS_REQUEST_H_
