// The environment's proxy variables, which libcurl obeys. The cloud is talked to directly.
#ifndef QORN_GATEWAY_PROCESS_PROXIES_H_
#define QORN_GATEWAY_PROCESS_PROXIES_H_

#include <string>

namespace gateway {

// The names of those that are set, with blanks between.
std::string ProxyVariablesInUse();

// Takes all of them out of this process's environment. Before other threads are made.
void ForgetProxies();

}  // namespace gateway

#endif  // QORN_GATEWAY_PROCESS_PROXIES_H_
