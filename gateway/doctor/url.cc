#include "gateway/doctor/url.h"

#include <arpa/inet.h>
#include <curl/curl.h>

#include <memory>

namespace gateway {
namespace {

struct UrlDeleter {
  void operator()(CURLU* url) const { curl_url_cleanup(url); }
};
using Url = std::unique_ptr<CURLU, UrlDeleter>;

// "" for a part that is not there.
std::string Part(const Url& url, CURLUPart part) {
  char* text = nullptr;
  if (curl_url_get(url.get(), part, &text, 0) != CURLUE_OK) return "";
  std::string copy = text;
  curl_free(text);
  return copy;
}

bool IsLoopback(const std::string& host) {
  in_addr address{};
  if (inet_pton(AF_INET, host.c_str(), &address) == 1) return (ntohl(address.s_addr) >> 24) == 127;
  return host == "localhost" || host.ends_with(".localhost") || host == "[::1]";
}

void JudgeScheme(const std::string& text, const std::string& scheme, const std::string& host,
                 Finding* finding) {
  // The component searches for small letters, so it does check the certificate of "HTTPS://".
  if (scheme == "https" && text.find("https") != std::string::npos) {
    finding->MarkWarning(
        "the server's certificate will not be checked, so whoever sits on the way can "
        "read and change what is sent");
  } else if (scheme == "http" && !IsLoopback(host)) {
    finding->MarkWarning("secrets and tokens cross the network in clear: use https");
  }
}

void HidePassword(const Url& url, Finding* finding) {
  if (Part(url, CURLUPART_USER).empty() && Part(url, CURLUPART_PASSWORD).empty()) return;
  finding->MarkWarning("holds a user or password (not shown): take it out");
  curl_url_set(url.get(), CURLUPART_USER, nullptr, 0);
  curl_url_set(url.get(), CURLUPART_PASSWORD, nullptr, 0);
  finding->value = Part(url, CURLUPART_URL);
}

}  // namespace

void JudgeUrl(const std::string& url, Finding* finding) {
  const Url parsed(curl_url());
  const CURLUcode code = curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), 0);
  if (code == CURLUE_BAD_SCHEME || url.find("://") == std::string::npos) {
    finding->MarkBad("does not begin with https://");
    return;
  }
  if (code != CURLUE_OK) {
    finding->MarkBad(std::string("is not a URL: ") + curl_url_strerror(code));
    return;
  }
  HidePassword(parsed, finding);
  const std::string scheme = Part(parsed, CURLUPART_SCHEME);
  if (scheme != "http" && scheme != "https") {
    finding->MarkBad("does not begin with https://");
    return;
  }
  if (url.find_first_of("?#") != std::string::npos) {
    finding->MarkBad("paths are put behind it, so it must hold no \"?\" and no \"#\"");
  }
  if (url.back() == '/') {
    finding->MarkWarning(
        "ends with \"/\", and paths begin with one: take it away, or requests go to "
        "\"//...\"");
  }
  JudgeScheme(url, scheme, Part(parsed, CURLUPART_HOST), finding);
}

}  // namespace gateway
