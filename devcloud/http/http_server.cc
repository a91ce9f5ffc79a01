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
#include "devcloud/http/listener.h"
#include "devcloud/http/request_queue.h"
#include "devcloud/http/socket_transport.h"

namespace devcloud {
namespace {

namespace asio = boost::asio;
using boost::system::error_code;
using tcp = asio::ip::tcp;

// Changes within this time are sent to open pages together, so that a burst of requests does not
// make one event each.
constexpr std::chrono::milliseconds kWakeDelay(50);

std::string Describe(const std::string& address, std::uint16_t port, const error_code& error) {
  return address + ":" + std::to_string(port) + ": " + error.message();
}

}  // namespace

// Members are used on the network thread only, once Run was called; public functions post to it.
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
        io_, [this, port] { return !port.for_gateways || HasRoom(); },
        [this, port](tcp::socket socket) { StartSession(port, std::move(socket)); });
    if (failure || !listener->Bind({parsed, port.number}, failure)) {
      *error = Describe(address, port.number, failure);
      return false;
    }
    ports_.push_back({.for_gateways = port.for_gateways, .listener = std::move(listener)});
    return true;
  }

  void Run() {
    thread_ = std::thread([this] { io_.run(); });
  }

  std::uint16_t port(std::size_t index) const { return ports_.at(index).listener->port(); }

  void RefuseConnections(bool refuse) {
    RunOnThread([this, refuse] {
      for (OpenPort& port : ports_) {
        error_code failure;
        if (!port.for_gateways) continue;
        if (refuse) {
          port.listener->Close();
        } else if (!port.listener->Open(failure)) {
          throw std::runtime_error(failure.message());
        }
      }
      if (!refuse) return;
      queue_.Clear();
      EndSessions(Which::kOfGateways);
    });
  }

  void SetLimits(const Limits& limits) {
    RunOnThread([this, limits] {
      limits_ = limits;
      queue_.SetRate(limits.requests_per_second);
      for (const OpenPort& port : ports_) {
        if (port.for_gateways) port.listener->SetLongQueue(limits.connections == 0);
      }
      ResumeAccepting();
    });
  }

  void ResumeStalled(std::uint64_t fault_number) {
    asio::post(io_, [this, fault_number] {
      for (const auto& session : Sessions(Which::kAll)) session->Resume(fault_number);
    });
  }

  void EndWaiting() {
    RunOnThread([this] {
      queue_.Clear();
      for (const auto& session : Sessions(Which::kAll)) {
        if (session->is_waiting()) session->End();
      }
    });
  }

  void WakeStreams() {
    if (is_wake_posted_.exchange(true)) return;
    asio::post(io_, [this] {
      wake_timer_.expires_after(kWakeDelay);
      wake_timer_.async_wait([this](const error_code& error) {
        is_wake_posted_ = false;
        if (error) return;
        for (const auto& session : Sessions(Which::kAll)) session->Wake();
      });
    });
  }

 private:
  struct OpenPort {
    bool for_gateways;
    std::unique_ptr<Listener> listener;
  };
  struct OpenSession {
    std::shared_ptr<HttpSession> session;
    bool for_gateways;  // as its port
  };
  enum class Which { kAll, kOfGateways };

  // Runs `body` on the network thread, waits for it and rethrows what it throws.
  void RunOnThread(const std::function<void()>& body) {
    // The API's handlers run on the network thread already, which would wait for itself. Before Run
    // there is no such thread.
    if (io_.get_executor().running_in_this_thread() || !thread_.joinable()) return body();
    std::packaged_task<void()> task(body);
    asio::post(io_, [&task] { task(); });
    task.get_future().get();
  }

  void StartSession(const Port& port, tcp::socket socket) {
    error_code ignored;
    const std::uint16_t number = socket.local_endpoint(ignored).port();
    std::unique_ptr<Transport> transport;
    if (port.tls) {
      transport = MakeTlsTransport(std::move(socket), tls_);
    } else {
      transport = MakePlainTransport(std::move(socket));
    }
    const auto session = std::make_shared<HttpSession>(
        std::move(transport), number, port.tls, handler_, port.for_gateways ? queue_ : unlimited_,
        [this](const HttpSession* ended) { EndSession(ended); });
    sessions_[session.get()] = {.session = session, .for_gateways = port.for_gateways};
    if (port.for_gateways) ++gateway_sessions_;
    session->Start();
  }

  void EndSession(const HttpSession* ended) {
    const auto found = sessions_.find(ended);
    if (found->second.for_gateways) --gateway_sessions_;
    sessions_.erase(found);
    ResumeAccepting();
  }

  bool HasRoom() const {
    return limits_.connections == 0 || gateway_sessions_ < limits_.connections;
  }

  void ResumeAccepting() {
    for (const OpenPort& port : ports_) port.listener->Resume();
  }

  // A copy: a session that ends erases itself from the map.
  std::vector<std::shared_ptr<HttpSession>> Sessions(Which which) const {
    std::vector<std::shared_ptr<HttpSession>> sessions;
    for (const auto& [key, entry] : sessions_) {
      if (which == Which::kAll || entry.for_gateways) sessions.push_back(entry.session);
    }
    return sessions;
  }

  void EndSessions(Which which) {
    for (const auto& session : Sessions(which)) session->End();
  }

  void Stop() {
    for (OpenPort& port : ports_) port.listener->Close();
    queue_.Clear();
    EndSessions(Which::kAll);
    wake_timer_.cancel();
    work_.reset();  // lets run() return once the handlers that were cancelled have run
  }

  RequestHandler& handler_;
  asio::io_context io_{1};
  asio::executor_work_guard<asio::io_context::executor_type> work_ = asio::make_work_guard(io_);
  asio::steady_timer wake_timer_{io_};
  std::atomic<bool> is_wake_posted_ = false;  // one timer for all calls until it fires
  asio::ssl::context tls_{asio::ssl::context::tls_server};
  std::vector<OpenPort> ports_;  // in the order given to HttpServer::Listen
  Limits limits_;
  RequestQueue queue_{io_};      // for the gateways' ports
  RequestQueue unlimited_{io_};  // for the others
  std::map<const HttpSession*, OpenSession> sessions_;
  int gateway_sessions_ = 0;
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

void HttpServer::SetLimits(const Limits& limits) { impl_->SetLimits(limits); }

void HttpServer::ResumeStalled(std::uint64_t fault_number) { impl_->ResumeStalled(fault_number); }

void HttpServer::EndWaiting() { impl_->EndWaiting(); }

void HttpServer::WakeStreams() { impl_->WakeStreams(); }

}  // namespace devcloud
