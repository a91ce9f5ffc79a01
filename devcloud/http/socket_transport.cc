#include "devcloud/http/socket_transport.h"

#include <array>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/asio/write.hpp>
#include <utility>

namespace devcloud {
namespace {

// What both transports share. `Stream` is a TCP socket or a TLS stream over one.
template <class Stream>
class SocketTransport : public Transport {
 public:
  template <class... Arguments>
  explicit SocketTransport(Arguments&&... arguments)
      : stream_(std::forward<Arguments>(arguments)...) {
    Ignored ignored;
    // Dripped bytes must leave one by one, not gathered into a packet.
    socket().set_option(boost::asio::ip::tcp::no_delay(true), ignored);
    // Without probes, a stream to a client that lost its network would stay open for ever.
    socket().set_option(boost::asio::socket_base::keep_alive(true), ignored);
  }

  void Read(char* data, std::size_t size, Handler handler) override {
    stream_.async_read_some(boost::asio::buffer(data, size), Adapt(std::move(handler)));
  }

  void Write(const char* data, std::size_t size, Handler handler) override {
    boost::asio::async_write(stream_, boost::asio::buffer(data, size), Adapt(std::move(handler)));
  }

  void Reset() override {
    Ignored ignored;
    // With a linger time of zero, close() sends RST instead of FIN.
    socket().set_option(boost::asio::socket_base::linger(true, 0), ignored);
    socket().close(ignored);
  }

  void Close() override {
    Ignored ignored;
    socket().close(ignored);
  }

 protected:
  // For calls that may fail because the client has already closed the connection.
  using Ignored = boost::system::error_code;

  boost::asio::ip::tcp::socket& socket() {
    if constexpr (std::is_same_v<Stream, boost::asio::ip::tcp::socket>) {
      return stream_;
    } else {
      return stream_.next_layer();
    }
  }

  static auto Adapt(Handler handler) {
    return [handler = std::move(handler)](boost::system::error_code error, std::size_t size) {
      handler(!error, size);
    };
  }

  Stream stream_;
};

class PlainTransport : public SocketTransport<boost::asio::ip::tcp::socket> {
 public:
  using SocketTransport::SocketTransport;

  void Open(Handler handler) override {
    boost::asio::post(stream_.get_executor(), [handler = std::move(handler)] { handler(true, 0); });
  }

  void Finish(Handler handler) override {
    Ignored ignored;
    stream_.shutdown(boost::asio::socket_base::shutdown_send, ignored);
    Drain(handler);
  }

 private:
  // Reads until the client closes: the kernel resets a connection that is closed with unread bytes.
  void Drain(const Handler& handler) {
    Read(drained_.data(), drained_.size(), [this, handler](bool ok, std::size_t) {
      if (ok) {
        Drain(handler);
      } else {
        handler(true, 0);
      }
    });
  }

  std::array<char, 4096> drained_;
};

class TlsTransport
    : public SocketTransport<boost::asio::ssl::stream<boost::asio::ip::tcp::socket>> {
 public:
  using SocketTransport::SocketTransport;

  void Open(Handler handler) override {
    stream_.async_handshake(
        boost::asio::ssl::stream_base::server,
        [handler = std::move(handler)](boost::system::error_code error) { handler(!error, 0); });
  }

  void Finish(Handler handler) override {
    stream_.async_shutdown(
        [handler = std::move(handler)](boost::system::error_code error) { handler(!error, 0); });
  }
};

}  // namespace

std::unique_ptr<Transport> MakePlainTransport(TcpSocket socket) {
  return std::make_unique<PlainTransport>(std::move(socket));
}

std::unique_ptr<Transport> MakeTlsTransport(TcpSocket socket, boost::asio::ssl::context& tls) {
  return std::make_unique<TlsTransport>(std::move(socket), tls);
}

}  // namespace devcloud
