// Reports the program's state to the service manager, by the protocol of sd_notify(3).
#ifndef QORN_GATEWAY_PROCESS_SERVICE_MANAGER_H_
#define QORN_GATEWAY_PROCESS_SERVICE_MANAGER_H_

#include <string>

namespace gateway {

// Sends the lines, such as "READY=1", to the datagram socket that NOTIFY_SOCKET names; does nothing
// without one. Any thread, as long as none changes the environment.
void Notify(const std::string& lines);

}  // namespace gateway

#endif  // QORN_GATEWAY_PROCESS_SERVICE_MANAGER_H_
