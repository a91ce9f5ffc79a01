// Connecting to a bus, asking on it, and texts as it takes them. One thread at a time uses a
// connection.
#ifndef QORN_BUS_CONNECTION_H_
#define QORN_BUS_CONNECTION_H_

#include <chrono>
#include <functional>
#include <string>

#include "bus/handles.h"

namespace bus {

// `address` is "system", "session" or a D-Bus address such as "unix:path=/run/bus". Blocks until
// the bus has answered. Null with one line in `error` when it cannot be reached.
ConnectionPtr Connect(const std::string& address, std::string* error);

// Sends a call. `then` gets the reply, which may be an error, while the connection's messages are
// processed. It is not called when the connection is closed before that. A negative errno when the
// message cannot be sent.
int CallAsync(sd_bus* connection, sd_bus_message* call, std::chrono::microseconds timeout,
              std::function<void(sd_bus_message* reply)> then);

// D-Bus strings are UTF-8 without zero bytes: every byte that does not fit becomes U+FFFD.
std::string ToUtf8(const std::string& text);

}  // namespace bus

#endif  // QORN_BUS_CONNECTION_H_
