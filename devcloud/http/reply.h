#ifndef QORN_DEVCLOUD_HTTP_REPLY_H_
#define QORN_DEVCLOUD_HTTP_REPLY_H_

#include <cstdint>
#include <functional>
#include <string>

namespace devcloud {

// What goes out on a connection after a request, and how.
struct Reply {
  enum class Delivery {
    kWhole,   // then the connection serves its next request, or closes when it is not kept alive
    kDrip,    // the same, one byte in each write
    kClose,   // then an orderly close
    kReset,   // then a TCP reset
    kStall,   // nothing: ask again once the fault is ended
    kStream,  // then what `next` gives, until the client closes
  };
  std::string bytes;
  Delivery delivery = Delivery::kWhole;
  // Of the fault that made the reply: its kind's name and its number; "" and 0 without one.
  const char* fault = "";
  std::uint64_t fault_number = 0;
  // kStream: the bytes to send now, "" when there is nothing new. Asked on the network thread, when
  // the bytes before are sent and whenever the server's streams are woken.
  std::function<std::string()> next = nullptr;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_REPLY_H_
