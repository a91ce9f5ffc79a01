#ifndef QORN_DEVCLOUD_HTTP_LISTENER_H_
#define QORN_DEVCLOUD_HTTP_LISTENER_H_

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstdint>
#include <functional>
#include <utility>

namespace devcloud {

// One port. A second socket is bound to it but never listens: while the port is closed, clients get
// "connection refused" and no other program can take the number. Network thread only.
class Listener {
 public:
  using TcpSocket = boost::asio::ip::tcp::socket;

  // `may_accept` is asked before each connection: false leaves it in the kernel's queue until
  // Resume is called.
  Listener(boost::asio::io_context& io, std::function<bool()> may_accept,
           std::function<void(TcpSocket)> on_accept)
      : reservation_(io),
        acceptor_(io),
        pause_(io),
        may_accept_(std::move(may_accept)),
        on_accept_(std::move(on_accept)) {}

  bool Bind(const boost::asio::ip::tcp::endpoint& endpoint, boost::system::error_code& error);
  bool Open(boost::system::error_code& error);
  void Close();

  // Whether the kernel completes a great many connections before they are accepted, or only two.
  void SetLongQueue(bool is_long);
  void Resume();

  std::uint16_t port() const;

 private:
  void Listen(boost::system::error_code& error);
  void Accept();
  void AcceptWaiting();
  void AcceptLater();

  TcpSocket reservation_;
  boost::asio::ip::tcp::acceptor acceptor_;
  boost::asio::steady_timer pause_;
  int close_count_ = 0;
  bool has_long_queue_ = true;
  bool is_held_ = false;  // may_accept_ said no
  const std::function<bool()> may_accept_;
  const std::function<void(TcpSocket)> on_accept_;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_LISTENER_H_
