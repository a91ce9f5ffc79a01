#include "gateway/keeper/account_server.h"

#include <curl/curl.h>

#include <memory>

#include "gateway/process/curl_options.h"

namespace gateway {
namespace {

constexpr long kTransferSeconds = 10;
constexpr long kServerError = 500;

size_t TakeNothing(char*, size_t, size_t count, void*) { return count; }

int IsToStop(void* stop, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  return *static_cast<const std::atomic<bool>*>(stop) ? 1 : 0;
}

}  // namespace

bool AccountServerAnswers(const std::string& url, const std::atomic<bool>& stop) {
  const std::unique_ptr<CURL, CurlDeleter> curl(curl_easy_init());
  if (curl == nullptr) return false;
  // The component does not check a certificate if the URL contains "https" anywhere.
  SetCommonOptions(curl.get(), url, kTransferSeconds, url.find("https") == std::string::npos);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, TakeNothing);
  curl_easy_setopt(curl.get(), CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(curl.get(), CURLOPT_XFERINFOFUNCTION, IsToStop);
  curl_easy_setopt(curl.get(), CURLOPT_XFERINFODATA, &stop);
  long status = 0;
  if (curl_easy_perform(curl.get()) != CURLE_OK) return false;
  curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &status);
  return status > 0 && status < kServerError;
}

}  // namespace gateway
