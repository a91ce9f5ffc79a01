#ifndef QORN_DEVCLOUD_HTTP_SOCKET_TRANSPORT_H_
#define QORN_DEVCLOUD_HTTP_SOCKET_TRANSPORT_H_

#include <boost/asio/ts/netfwd.hpp>
#include <memory>

#include "devcloud/http/transport.h"

// Declared here so that only two .cc files compile Asio.
namespace boost::asio::ip {
class tcp;
}
namespace boost::asio::ssl {
class context;
}

namespace devcloud {

using TcpSocket = boost::asio::basic_stream_socket<boost::asio::ip::tcp>;

// Transports over an accepted socket, which they own. The TLS settings are borrowed.
std::unique_ptr<Transport> MakePlainTransport(TcpSocket socket);
std::unique_ptr<Transport> MakeTlsTransport(TcpSocket socket, boost::asio::ssl::context& tls);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_SOCKET_TRANSPORT_H_
