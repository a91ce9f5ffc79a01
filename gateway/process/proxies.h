// Proxy variables of the environment, which libcurl would obey. The gateway always connects to the
// cloud directly.
#ifndef QORN_GATEWAY_PROCESS_PROXIES_H_
#define QORN_GATEWAY_PROCESS_PROXIES_H_

#include <string>

namespace gateway {

// The names of those that are set, separated by blanks.
std::string ProxyVariablesInUse();

// Removes them from this process's environment. Call it before other threads are started, since
// another thread may read the environment at the same time.
void ForgetProxies();

}  // namespace gateway

#endif  // QORN_GATEWAY_PROCESS_PROXIES_H_
