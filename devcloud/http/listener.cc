#include "devcloud/http/listener.h"

#include <chrono>
#include <utility>

namespace devcloud {
namespace {

using boost::system::error_code;
using tcp = boost::asio::ip::tcp;

// The kernel adds one. At 0 it would also answer with SYN cookies and log a flood.
constexpr int kShortQueue = 1;

}  // namespace

bool Listener::Bind(const tcp::endpoint& endpoint, error_code& error) {
  reservation_.open(endpoint.protocol(), error);
  if (!error) reservation_.set_option(tcp::socket::reuse_address(true), error);
  if (!error) reservation_.bind(endpoint, error);
  return !error && Open(error);
}

bool Listener::Open(error_code& error) {
  if (acceptor_.is_open()) return true;
  const tcp::endpoint endpoint = reservation_.local_endpoint(error);
  if (!error) acceptor_.open(endpoint.protocol(), error);
  if (!error) acceptor_.set_option(tcp::acceptor::reuse_address(true), error);
  if (!error) acceptor_.bind(endpoint, error);
  if (!error) Listen(error);
  if (!error) acceptor_.non_blocking(true, error);
  if (!error) Accept();
  return !error;
}

void Listener::Close() {
  error_code ignored;
  acceptor_.close(ignored);
  pause_.cancel(ignored);
  is_held_ = false;
  ++close_count_;
}

void Listener::SetLongQueue(bool is_long) {
  has_long_queue_ = is_long;
  error_code ignored;
  if (acceptor_.is_open()) Listen(ignored);  // changes the length alone
}

void Listener::Resume() {
  if (std::exchange(is_held_, false)) Accept();
}

std::uint16_t Listener::port() const {
  error_code ignored;
  return reservation_.local_endpoint(ignored).port();
}

void Listener::Listen(error_code& error) {
  acceptor_.listen(has_long_queue_ ? boost::asio::socket_base::max_listen_connections : kShortQueue,
                   error);
}

// Waits without accepting, since the limit may be reached on another port in the meantime.
void Listener::Accept() {
  // A handler that was queued before Close still runs; the count tells it that it is late.
  acceptor_.async_wait(tcp::acceptor::wait_read,
                       [this, count = close_count_](const error_code& error) {
                         if (count != close_count_) return;
                         if (error) return AcceptLater();
                         AcceptWaiting();
                       });
}

void Listener::AcceptWaiting() {
  is_held_ = !may_accept_();
  if (is_held_) return;
  error_code error;
  TcpSocket socket = acceptor_.accept(error);
  if (error && error != boost::asio::error::would_block) return AcceptLater();
  if (!error) on_accept_(std::move(socket));
  Accept();
}

// When the process is out of descriptors, every accept fails at once. The pause keeps that from
// taking the processor.
void Listener::AcceptLater() {
  pause_.expires_after(std::chrono::milliseconds(50));
  pause_.async_wait([this, count = close_count_](const error_code&) {
    if (count == close_count_) Accept();
  });
}

}  // namespace devcloud
