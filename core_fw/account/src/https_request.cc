#include "core_fw/account/src/https_request.h"

#include <curl/curl.h>

#include <memory>

#include "base/location.h"
#include "core_fw/account/src/account_log.h"

namespace account {
namespace {

struct HandleDeleter {
  void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
struct ListDeleter {
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using Handle = std::unique_ptr<CURL, HandleDeleter>;
using HeaderList = std::unique_ptr<curl_slist, ListDeleter>;

// libcurl's write callback, called on the thread that sends. Returning less than it was given
// aborts the transfer. No exception may pass through libcurl's C code.
size_t AppendResponse(char* data, size_t size, size_t count, void* response) {
  if (response == nullptr) return 0;
  try {
    static_cast<std::string*>(response)->append(data, size * count);
  } catch (...) {
    return 0;
  }
  return size * count;
}

// False if an allocation fails.
bool MakeHeaderList(const std::vector<std::string>& headers, HeaderList* list) {
  for (const std::string& header : headers) {
    curl_slist* longer = curl_slist_append(list->get(), header.c_str());
    if (longer == nullptr) return false;
    (void)list->release();
    list->reset(longer);
  }
  return true;
}

// Only the options whose value libcurl copies are checked: setting them allocates.
CURLcode SetOptions(CURL* handle, const std::string& url, const HeaderList& headers, unsigned post,
                    const std::string& body, char* error_buffer, std::string* response) {
  curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, error_buffer);
  const CURLcode code = curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
  if (code != CURLE_OK) return code;
  curl_easy_setopt(handle, CURLOPT_HEADER, 1L);
  curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &AppendResponse);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, response);
  curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers.get());
  curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT, 5L);
  // Deliberate: the cloud is reached without checking certificates. Also deliberate is the search
  // through the whole URL.
  if (url.find("https") != std::string::npos) {
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 0L);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, 0L);
    // A handle serves one request and cannot use a cache of TLS sessions. With the cache on,
    // libcurl frees a session's names twice if an allocation fails.
    curl_easy_setopt(handle, CURLOPT_SSL_SESSIONID_CACHE, 0L);
  }
  if (post == 0) return CURLE_OK;
  const CURLcode post_code = curl_easy_setopt(handle, CURLOPT_CUSTOMREQUEST, "POST");
  curl_easy_setopt(handle, CURLOPT_POSTFIELDS, body.c_str());
  return post_code;
}

HttpResult Classify(long status) {
  switch (status) {
    case 200:
      return kHttpOk;
    case 204:
      return kHttpNoContent;
    case 400:
      return kHttpBadRequest;
    case 403:
      return kHttpForbidden;
    case 404:
      return kHttpNotFound;
    default:
      return kHttpOtherStatus;
  }
}

}  // namespace

void StartTransport() { curl_global_init(CURL_GLOBAL_DEFAULT); }

void StopTransport() { curl_global_cleanup(); }

std::string SendRequest(const std::vector<std::string>& headers, const std::string& url,
                        unsigned post, const std::string& body, HttpResult* result) {
  std::string response;
  Handle handle(curl_easy_init());
  HeaderList list;
  const bool complete = MakeHeaderList(headers, &list);
  if (handle == nullptr) {
    LogFailure(FROM_HERE, "SendRequest", "Cannot user CURL");  // Deliberate spelling.
    return std::string();
  }
  if (!complete) {
    *result = kHttpTransportError;
    return std::string();
  }
  char error_buffer[CURL_ERROR_SIZE] = "";
  CURLcode code = SetOptions(handle.get(), url, list, post, body, error_buffer, &response);
  if (code == CURLE_OK) code = curl_easy_perform(handle.get());
  long status = 0;
  curl_easy_getinfo(handle.get(), CURLINFO_RESPONSE_CODE, &status);
  // Freed before the error is logged, because a log handler may send requests, too.
  handle.reset();
  list.reset();
  if (code != CURLE_OK) {
    *result = kHttpTransportError;
    Log(FROM_HERE, kSeverityFailure, "SendRequest",
        {"curl error code = ", std::to_string(static_cast<int>(code))});
    Log(FROM_HERE, kSeverityFailure, "SendRequest", {"error buffer = ", error_buffer});
    return std::string();
  }
  *result = Classify(status);
  return response;
}

}  // namespace account
