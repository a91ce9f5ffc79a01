#include "devcloud/http/origin.h"

#include <strings.h>

#include <algorithm>
#include <string>

#include "devcloud/http/http_text.h"

namespace devcloud {
namespace {

bool IsAddressOrPlainName(const std::string& authority) {
  if (authority.starts_with('[')) return true;  // an IPv6 address
  const std::string host = authority.substr(0, authority.find(':'));
  const std::string last = host.substr(host.rfind('.') + 1);
  // No top-level domain is made of digits.
  return last == host || (!last.empty() && std::all_of(last.begin(), last.end(), [](char c) {
           return c >= '0' && c <= '9';
         }));
}

}  // namespace

bool IsOfForeignPage(const RecordedRequest& request) {
  const std::string origin = HeaderOf(request, "Origin");
  if (origin.empty()) return false;
  const std::string host = HeaderOf(request, "Host");
  const std::string own = (request.tls ? "https://" : "http://") + host;
  return strcasecmp(origin.c_str(), own.c_str()) != 0 || !IsAddressOrPlainName(host);
}

}  // namespace devcloud
