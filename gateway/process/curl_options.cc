#include "gateway/process/curl_options.h"

namespace gateway {
namespace {

constexpr long kConnectSeconds = 5;

}  // namespace

void SetCommonOptions(CURL* curl, const std::string& url, long seconds, bool verify) {
  curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
  // An empty text switches proxies off, whatever the environment says.
  curl_easy_setopt(curl, CURLOPT_PROXY, "");
  // Without this, libcurl may use SIGALRM for timeouts, which is not safe with threads.
  curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
  curl_easy_setopt(curl, CURLOPT_TIMEOUT, seconds);
  curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, verify ? 1L : 0L);
  curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, verify ? 2L : 0L);
}

}  // namespace gateway
