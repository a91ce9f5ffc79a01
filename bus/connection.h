// Connecting to a bus, asking on it, and texts as it takes them. One thread at a time uses a
// connection.
#ifndef QORN_BUS_CONNECTION_H_
#define QORN_BUS_CONNECTION_H_

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "bus/handles.h"

namespace bus {

// `address` is "system", "session" or a D-Bus address such as "unix:path=/run/bus". Blocks until
// the bus has answered. Null with one line in `error` when it cannot be reached.
ConnectionPtr Connect(const std::string& address, std::string* error);

// Calls that wait for their replies.
class PendingCalls {
 public:
  // `reply` may be an error, and is null when the connection was lost.
  using Then = std::function<void(sd_bus_message* reply)>;

  PendingCalls() = default;
  PendingCalls(const PendingCalls&) = delete;
  PendingCalls& operator=(const PendingCalls&) = delete;

  // Sends a call. `then` runs while the connection's messages are processed. A negative errno, and
  // no `then`, when the message cannot be sent.
  int Send(sd_bus* connection, sd_bus_message* call, std::chrono::microseconds timeout, Then then);

  // The connection is lost: nothing that waits will get a reply. sd-bus tells only of some losses.
  void Fail();

 private:
  struct Place {
    PendingCalls* calls;
    uint64_t number;
  };

  static int OnReply(sd_bus_message* reply, void* place, sd_bus_error* error);

  uint64_t next_ = 0;
  std::map<uint64_t, Then> waiting_;
};

// D-Bus strings are UTF-8 without zero bytes: every byte that does not fit becomes U+FFFD.
std::string ToUtf8(const std::string& text);

}  // namespace bus

#endif  // QORN_BUS_CONNECTION_H_
