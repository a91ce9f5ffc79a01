// http/ is the HTTP server: sockets, TLS, requests and replies as bytes, and the router. It knows
// nothing of accounts, faults or the page.
#ifndef QORN_DEVCLOUD_HTTP_HTTP_SERVER_H_
#define QORN_DEVCLOUD_HTTP_HTTP_SERVER_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "devcloud/http/certificate.h"
#include "devcloud/http/limits.h"
#include "devcloud/http/request_handler.h"

namespace devcloud {

// Listens on several ports of one address and serves them on one network thread. Thread-safe.
class HttpServer {
 public:
  struct Port {
    std::uint16_t number;  // 0 picks a free port
    bool tls;
    bool for_gateways;  // whether RefuseConnections and SetLimits are about it
  };

  // Clients can connect once this returns, and are served once Run is called. Null, with one line
  // in `error`, if a port cannot be opened. The handler is borrowed.
  static std::unique_ptr<HttpServer> Listen(const std::string& address,
                                            const std::vector<Port>& ports,
                                            const Certificate& certificate, RequestHandler& handler,
                                            std::string* error);
  // Closes every connection and joins the network thread.
  ~HttpServer();

  void Run();

  // The number of the port at this index of the list given to Listen.
  std::uint16_t port(std::size_t index) const;

  // For the gateways' ports: true closes them and their connections, false reopens them.
  // Throws std::runtime_error if the system is out of sockets.
  void RefuseConnections(bool refuse);

  // For the gateways' ports, with none at the start. Connections beyond a new limit stay open.
  void SetLimits(const Limits& limits);

  // Calls the handler again for each request stalled by the fault with this number; 0 stands for
  // every fault.
  void ResumeStalled(std::uint64_t fault_number);

  // Closes the connection of each request that waits, for its turn or for a fault to end. In effect
  // when it returns.
  void EndWaiting();

  // Makes every stream send what is new within about 50 ms. Calls during that time count as one.
  void WakeStreams();

 private:
  class Impl;
  explicit HttpServer(std::unique_ptr<Impl> impl);

  const std::unique_ptr<Impl> impl_;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_HTTP_SERVER_H_
