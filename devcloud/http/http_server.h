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
#include "devcloud/http/request_handler.h"

namespace devcloud {

// Listens on ports of one address and serves them on one network thread. Thread-safe.
class HttpServer {
 public:
  struct Port {
    std::uint16_t number;  // 0: a free one
    bool tls;
    bool may_refuse;
  };

  // Clients can connect from here on, and are served once Run was called. Null, with one line in
  // `error`, when a port cannot be had. The handler is borrowed.
  static std::unique_ptr<HttpServer> Listen(const std::string& address,
                                            const std::vector<Port>& ports,
                                            const Certificate& certificate, RequestHandler& handler,
                                            std::string* error);
  // Cuts every connection and waits for the network thread.
  ~HttpServer();

  void Run();

  // The number of the port at this place in the list that Listen was given.
  std::uint16_t port(std::size_t index) const;

  // For the ports that may refuse: true cuts their connections and closes them, false opens them
  // again. Throws std::runtime_error when the system has no socket left.
  void RefuseConnections(bool refuse);

  // Asks the handler again about every request that the fault of this number stalls, or about every
  // stalled request for 0.
  void ResumeStalled(std::uint64_t fault_number);

  // Has every stream send what is new, within some 50 ms, once for all calls until then.
  void WakeStreams();

 private:
  class Impl;
  explicit HttpServer(std::unique_ptr<Impl> impl);

  const std::unique_ptr<Impl> impl_;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_HTTP_SERVER_H_
