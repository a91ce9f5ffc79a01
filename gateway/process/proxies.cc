#include "gateway/process/proxies.h"

#include <cstdlib>

namespace gateway {
namespace {

constexpr const char* kNames[] = {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy",
                                  "ALL_PROXY",  "HTTP_PROXY",  "no_proxy",    "NO_PROXY"};

}  // namespace

std::string ProxyVariablesInUse() {
  std::string names;
  for (const char* name : kNames) {
    if (std::getenv(name) != nullptr) names += (names.empty() ? "" : " ") + std::string(name);
  }
  return names;
}

void ForgetProxies() {
  for (const char* name : kNames) unsetenv(name);
}

}  // namespace gateway
