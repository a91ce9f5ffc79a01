#ifndef QORN_GATEWAY_MAINTENANCE_RUNNING_GATEWAY_H_
#define QORN_GATEWAY_MAINTENANCE_RUNNING_GATEWAY_H_

#include <string>

namespace gateway {

// What a running gateway tells of itself on D-Bus, one line for each property, or one line why it
// tells nothing. `bus_address` is "system", "session" or a D-Bus address. Blocks for five seconds
// at most once the bus has answered.
std::string DescribeRunningGateway(const std::string& bus_address);

}  // namespace gateway

#endif  // QORN_GATEWAY_MAINTENANCE_RUNNING_GATEWAY_H_
