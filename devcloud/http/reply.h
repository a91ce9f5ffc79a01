#ifndef QORN_DEVCLOUD_HTTP_REPLY_H_
#define QORN_DEVCLOUD_HTTP_REPLY_H_

#include <cstdint>
#include <functional>
#include <string>

namespace devcloud {

// What is sent for a request, and how.
struct Reply {
  enum class Delivery {
    kWhole,   // all bytes, then the connection's next request; closes unless it is kept alive
    kDrip,    // the same, one byte per write
    kClose,   // all bytes, then an orderly close
    kReset,   // all bytes, then a TCP reset
    kStall,   // nothing; the handler is called again once the fault has ended
    kStream,  // all bytes, then whatever `next` returns, until the client closes
  };
  std::string bytes;
  Delivery delivery = Delivery::kWhole;
  // Kind name and number of the fault that made the reply; "" and 0 if none did.
  const char* fault = "";
  std::uint64_t fault_number = 0;
  // For kStream: returns the bytes to send now, or "" if there is nothing new. Called on the
  // network thread, after each write and whenever HttpServer::WakeStreams was called.
  std::function<std::string()> next = nullptr;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_REPLY_H_
