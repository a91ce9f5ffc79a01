#include "devcloud/http/origin.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <strings.h>

#include "devcloud/http/http_text.h"

namespace devcloud {
namespace {

// "[::1]:80" has the host "::1" and the port "80".
struct Authority {
  std::string host;
  std::string port;  // "" when there is none
};

Authority SplitAuthority(const std::string& text) {
  const std::size_t bracket = text.find(']');
  const std::size_t colon = text.find(':', bracket == std::string::npos ? 0 : bracket);
  Authority authority{.host = text.substr(0, colon), .port = ""};
  if (colon != std::string::npos) authority.port = text.substr(colon + 1);
  std::string& host = authority.host;
  if (host.starts_with('[') && host.ends_with(']')) host = host.substr(1, host.size() - 2);
  return authority;
}

bool IsLoopbackAddress(const std::string& host) {
  in_addr v4{};
  if (inet_pton(AF_INET, host.c_str(), &v4) == 1) return ntohl(v4.s_addr) >> 24 == IN_LOOPBACKNET;
  in6_addr v6{};
  return inet_pton(AF_INET6, host.c_str(), &v6) == 1 && IN6_IS_ADDR_LOOPBACK(&v6);
}

bool IsIpAddress(const std::string& host) {
  in6_addr ignored{};  // large enough for both kinds
  return inet_pton(AF_INET, host.c_str(), &ignored) == 1 ||
         inet_pton(AF_INET6, host.c_str(), &ignored) == 1;
}

bool StandsForAllAddresses(const std::string& address) {
  return address == "0.0.0.0" || address == "::";
}

}  // namespace

bool NamesThisMachine(const RecordedRequest& request, const std::string& address) {
  const Authority named = SplitAuthority(HeaderOf(request, "Host"));
  if (StandsForAllAddresses(address)) {
    return IsIpAddress(named.host) || named.host.find('.') == std::string::npos;
  }
  const std::string default_port = request.tls ? "443" : "80";
  return (named.port.empty() ? default_port : named.port) == std::to_string(request.port) &&
         (strcasecmp(named.host.c_str(), "localhost") == 0 || named.host == address ||
          IsLoopbackAddress(named.host));
}

bool IsFromForeignPage(const RecordedRequest& request) {
  const std::string origin = HeaderOf(request, "Origin");
  if (origin.empty()) return false;
  const std::string authority = HeaderOf(request, "Host");
  const std::string own = (request.tls ? "https://" : "http://") + authority;
  if (strcasecmp(origin.c_str(), own.c_str()) != 0) return true;
  const std::string host = SplitAuthority(authority).host;
  return host.find('.') != std::string::npos && !IsIpAddress(host);
}

}  // namespace devcloud
