// What the gateway's own requests have in common. The component's requests are not made here.
#ifndef QORN_GATEWAY_PROCESS_CURL_OPTIONS_H_
#define QORN_GATEWAY_PROCESS_CURL_OPTIONS_H_

#include <curl/curl.h>

#include <string>

namespace gateway {

struct CurlDeleter {
  void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
  void operator()(char* text) const { curl_free(text); }
};

// A request to `url` over HTTP or HTTPS, without a proxy: five seconds at most to connect and
// `seconds` for all. `verify` checks the certificate.
void SetCommonOptions(CURL* curl, const std::string& url, long seconds, bool verify);

}  // namespace gateway

#endif  // QORN_GATEWAY_PROCESS_CURL_OPTIONS_H_
