// The time that a gateway waits at its start, so that the gateways of a neighbourhood do not all
// ask the cloud at once when the power comes back.
#ifndef QORN_GATEWAY_HOST_START_SPREAD_H_
#define QORN_GATEWAY_HOST_START_SPREAD_H_

#include <chrono>
#include <string>

namespace gateway {

// The configuration's key: the longest wait. Absent or empty: no wait.
inline constexpr char kStartSpreadKey[] = "gateway_start_spread_seconds";

// Reads a whole number of seconds from 0 to 86,400; false for anything else.
bool ParseStartSpread(const std::string& text, std::chrono::seconds* spread);

// From 0 to `spread`, always the same for one device address.
std::chrono::seconds StartDelay(std::chrono::seconds spread, const std::string& device_address);

}  // namespace gateway

#endif  // QORN_GATEWAY_HOST_START_SPREAD_H_
