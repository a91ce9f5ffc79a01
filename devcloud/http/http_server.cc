#include "devcloud/http/http_server.h"

#include <atomic>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <functional>
#include <future>
#include <map>
#include <stdexcept>
#include <thread>
#include <utility>

#include "devcloud/http/http_session.h"
#include "devcloud/http/socket_transport.h"

namespace devcloud {
namespace {

namespace asio = boost::asio;
using boost::system::error_code;
using tcp = asio::ip::tcp;

// Open pages hear of changes in pieces of this length, however many there are.
constexpr std::chrono::milliseconds kWakeDelay(50);

// One port. A second socket, bound but never listening, keeps the port's number while the port is
// closed: others get it refused, and nobody else can take it.
class Listener {
 public:
  using OnAccept = std::function<void(tcp::socket)>;

  Listener(asio::io_context& io, OnAccept on_accept)
      : holder_(io), acceptor_(io), pause_(io), on_accept_(std::move(on_accept)) {}

  bool Hold(const tcp::endpoint& endpoint, error_code& error) {
    holder_.open(endpoint.protocol(), error);
    if (!error) holder_.set_option(tcp::socket::reuse_address(true), error);
    if (!error) holder_.bind(endpoint, error);
    return !error && Open(error);
  }

  bool Open(error_code& error) {
    if (acceptor_.is_open()) return true;
    const tcp::endpoint endpoint = holder_.local_endpoint(error);
    if (!error) acceptor_.open(endpoint.protocol(), error);
    if (!error) acceptor_.set_option(tcp::acceptor::reuse_address(true), error);
    if (!error) acceptor_.bind(endpoint, error);
    if (!error) acceptor_.listen(asio::socket_base::max_listen_connections, error);
    if (!error) Accept();
    return !error;
  }

  void Close() {
    error_code ignored;
    acceptor_.close(ignored);
    pause_.cancel(ignored);
    ++times_closed_;
  }

  std::uint16_t port() const {
    error_code ignored;
    return holder_.local_endpoint(ignored).port();
  }

 private:
  void Accept() {
    // Closing does not call back what has come in just before.
    acceptor_.async_accept(
        [this, times = times_closed_](const error_code& error, tcp::socket socket) {
          if (times != times_closed_) return;
          if (error) return AcceptLater();
          on_accept_(std::move(socket));
          Accept();
        });
  }

  // Without file descriptors every accept fails at once.
  void AcceptLater() {
    pause_.expires_after(std::chrono::milliseconds(50));
    pause_.async_wait([this, times = times_closed_](const error_code&) {
      if (times == times_closed_) Accept();
    });
  }

  tcp::socket holder_;
  tcp::acceptor acceptor_;
  asio::steady_timer pause_;
  int times_closed_ = 0;
  const OnAccept on_accept_;
};

std::string Describe(const std::string& address, std::uint16_t port, const error_code& error) {
  return address + ":" + std::to_string(port) + ": " + error.message();
}

}  // namespace

// Everything but the public calls runs on the network thread, except before Run.
class HttpServer::Impl {
 public:
  explicit Impl(RequestHandler& handler) : handler_(handler) {}

  ~Impl() {
    if (!thread_.joinable()) return;
    RunOnThread([this] { Stop(); });
    thread_.join();
  }

  bool UseCertificate(const Certificate& certificate, std::string* error) {
    error_code failure;
    tls_.set_options(asio::ssl::context::no_tlsv1 | asio::ssl::context::no_tlsv1_1, failure);
    if (!failure) {
      tls_.use_certificate_chain(asio::buffer(certificate.certificate_pem), failure);
    }
    if (!failure) {
      tls_.use_private_key(asio::buffer(certificate.private_key_pem), asio::ssl::context::pem,
                           failure);
    }
    if (failure) *error = "certificate: " + failure.message();
    return !failure;
  }

  bool Listen(const std::string& address, const Port& port, std::string* error) {
    error_code failure;
    const asio::ip::address parsed = asio::ip::make_address(address, failure);
    auto listener = std::make_unique<Listener>(
        io_, [this, port](tcp::socket socket) { StartSession(port, std::move(socket)); });
    if (failure || !listener->Hold({parsed, port.number}, failure)) {
      *error = Describe(address, port.number, failure);
      return false;
    }
    listeners_.emplace_back(port.may_refuse, std::move(listener));
    return true;
  }

  void Run() {
    thread_ = std::thread([this] { io_.run(); });
  }

  std::uint16_t port(std::size_t index) const { return listeners_.at(index).second->port(); }

  void RefuseConnections(bool refuse) {
    RunOnThread([this, refuse] {
      for (auto& [may_refuse, listener] : listeners_) {
        error_code failure;
        if (!may_refuse) continue;
        if (refuse) {
          listener->Close();
        } else if (!listener->Open(failure)) {
          throw std::runtime_error(failure.message());
        }
      }
      if (refuse) EndSessions(false);
    });
  }

  void ResumeStalled(std::uint64_t fault_number) {
    asio::post(io_, [this, fault_number] {
      for (const auto& session : Sessions(true)) session->Resume(fault_number);
    });
  }

  void WakeStreams() {
    if (is_wake_posted_.exchange(true)) return;
    asio::post(io_, [this] {
      wake_timer_.expires_after(kWakeDelay);
      wake_timer_.async_wait([this](const error_code& error) {
        is_wake_posted_ = false;
        if (error) return;
        for (const auto& session : Sessions(true)) session->Wake();
      });
    });
  }

 private:
  // Runs it on the network thread and waits; what it throws comes back.
  void RunOnThread(const std::function<void()>& body) {
    if (io_.get_executor().running_in_this_thread()) return body();
    std::packaged_task<void()> task(body);
    asio::post(io_, [&task] { task(); });
    task.get_future().get();
  }

  void StartSession(const Port& port, tcp::socket socket) {
    error_code ignored;
    const std::uint16_t number = socket.local_endpoint(ignored).port();
    std::unique_ptr<Transport> transport = port.tls ? MakeTlsTransport(std::move(socket), tls_)
                                                    : MakePlainTransport(std::move(socket));
    const auto session =
        std::make_shared<HttpSession>(std::move(transport), number, port.tls, handler_,
                                      [this](const HttpSession* ended) { sessions_.erase(ended); });
    sessions_[session.get()] = {session, port.may_refuse};
    session->Start();
  }

  // A copy, since a session that ends leaves the map.
  std::vector<std::shared_ptr<HttpSession>> Sessions(bool of_every_port) const {
    std::vector<std::shared_ptr<HttpSession>> sessions;
    for (const auto& [key, entry] : sessions_) {
      if (of_every_port || entry.second) sessions.push_back(entry.first);
    }
    return sessions;
  }

  void EndSessions(bool of_every_port) {
    for (const auto& session : Sessions(of_every_port)) session->End();
  }

  void Stop() {
    for (auto& entry : listeners_) entry.second->Close();
    EndSessions(true);
    wake_timer_.cancel();
    work_.reset();
  }

  RequestHandler& handler_;
  asio::io_context io_{1};
  asio::executor_work_guard<asio::io_context::executor_type> work_ = asio::make_work_guard(io_);
  asio::steady_timer wake_timer_{io_};
  std::atomic<bool> is_wake_posted_ = false;
  asio::ssl::context tls_{asio::ssl::context::tls_server};
  std::vector<std::pair<bool, std::unique_ptr<Listener>>> listeners_;  // first: may refuse
  std::map<const HttpSession*, std::pair<std::shared_ptr<HttpSession>, bool>> sessions_;
  std::thread thread_;
};

std::unique_ptr<HttpServer> HttpServer::Listen(const std::string& address,
                                               const std::vector<Port>& ports,
                                               const Certificate& certificate,
                                               RequestHandler& handler, std::string* error) {
  auto impl = std::make_unique<Impl>(handler);
  if (!impl->UseCertificate(certificate, error)) return nullptr;
  for (const Port& port : ports) {
    if (!impl->Listen(address, port, error)) return nullptr;
  }
  return std::unique_ptr<HttpServer>(new HttpServer(std::move(impl)));
}

HttpServer::HttpServer(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

HttpServer::~HttpServer() = default;

void HttpServer::Run() { impl_->Run(); }

std::uint16_t HttpServer::port(std::size_t index) const { return impl_->port(index); }

void HttpServer::RefuseConnections(bool refuse) { impl_->RefuseConnections(refuse); }

void HttpServer::ResumeStalled(std::uint64_t fault_number) { impl_->ResumeStalled(fault_number); }

void HttpServer::WakeStreams() { impl_->WakeStreams(); }

}  // namespace devcloud
