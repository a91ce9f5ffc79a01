// Tells the service manager how the program stands (the protocol of sd_notify(3)).
#ifndef QORN_GATEWAY_PROCESS_SERVICE_MANAGER_H_
#define QORN_GATEWAY_PROCESS_SERVICE_MANAGER_H_

#include <string>

namespace gateway {

// Sends the lines ("READY=1") to the datagram socket that NOTIFY_SOCKET names; does nothing without
// one. Any thread; the environment must not change meanwhile.
void Notify(const std::string& lines);

}  // namespace gateway

#endif  // QORN_GATEWAY_PROCESS_SERVICE_MANAGER_H_
