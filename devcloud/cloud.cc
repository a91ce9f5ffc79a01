#include "devcloud/cloud.h"

#include <atomic>
#include <exception>
#include <optional>
#include <utility>

#include "base/lock.h"
#include "base/thread_annotations.h"
#include "devcloud/control/control.h"
#include "devcloud/control/live_stream.h"
#include "devcloud/control/request_log.h"
#include "devcloud/faults/fault_json.h"
#include "devcloud/faults/fault_list.h"
#include "devcloud/faults/faulty_reply.h"
#include "devcloud/faults/scenario.h"
#include "devcloud/http/certificate.h"
#include "devcloud/http/http_server.h"
#include "devcloud/http/origin.h"
#include "devcloud/http/router.h"
#include "devcloud/services/account_server.h"
#include "devcloud/services/accounts.h"
#include "devcloud/services/clock.h"
#include "devcloud/services/devices.h"
#include "devcloud/services/portal.h"
#include "devcloud/services/request_user.h"
#include "devcloud/services/secrets.h"
#include "devcloud/services/state_file.h"

namespace devcloud {
namespace {

// Indices into the list of ports given to HttpServer.
constexpr std::size_t kHttp = 0;
constexpr std::size_t kHttps = 1;
constexpr std::size_t kApi = 2;

// RFC 9110 section 15.5.20.
Answer Misdirected() {
  return PlainText(421, "The page and the API answer only to localhost and to this address.");
}

}  // namespace

class Cloud::Impl : public RequestHandler {
 public:
  explicit Impl(const Options& options)
      : address(options.address),
        accounts(clock, options.settings.tokens),
        portal(accounts, devices, options.nts),
        state_file(options.state_file, accounts, devices),
        options_(options),
        settings_(options.settings) {
    AddRoutes();
    router_.AddStream("GET", "/api/events", [this] { return live_stream_.Open(); });
    AddControlRoutes(control_, &router_);
  }

  bool Listen(std::string* error) {
    const std::string& named =
        options_.certificate_address.empty() ? address : options_.certificate_address;
    Certificate certificate;
    const std::string& scenario = options_.scenario_file;
    if (!scenario.empty() && !ReadScenario(scenario, &scenario_, error)) return false;
    if (!state_file.Load(error) || !MakeSelfSigned(named, &certificate, error)) return false;
    AddFromOptions();
    server_ =
        HttpServer::Listen(address,
                           {{.number = options_.http_port, .tls = false, .for_gateways = true},
                            {.number = options_.https_port, .tls = true, .for_gateways = true},
                            {.number = options_.api_port, .tls = false, .for_gateways = false}},
                           certificate, *this, error);
    if (server_ == nullptr) return false;
    server_->SetLimits(options_.settings.limits);
    urls = {.http = Url("http", kHttp), .https = Url("https", kHttps), .api = Url("http", kApi)};
    server_->Run();
    if (scenario_.is_refusing) RefuseConnections(true);
    return true;
  }

  // Call after every change to what the pages show.
  void NotifyPages() {
    live_stream_.MarkStale();
    server_->WakeStreams();
  }

  void ClearFaults() {
    faults.Clear();
    server_->ResumeStalled(0);
    NotifyPages();
  }

  void RefuseConnections(bool refuse) {
    server_->RefuseConnections(refuse);
    is_refusing_ = refuse;
    NotifyPages();
  }

  void Record(RecordedRequest* request) override {
    request->time = clock.Now();
    // An open page asks all the time; its requests would bury those of the gateways.
    if (IsControlRequest(*request) && !IsFaultyRoot(*request)) return;
    request->user = UserOf(accounts, *request);
    log.Add(request);
  }

  Reply Respond(const RecordedRequest& request, bool keep_alive) override {
    if (IsForPeople(request) && !NamesThisMachine(request, address)) {
      return {Serialize(Misdirected(), keep_alive), Reply::Delivery::kWhole};
    }
    const auto normal = [this, &request] { return HandleAndSave(request); };
    if (request.number == 0) {
      std::optional<Reply> stream = router_.OpenStream(request);
      if (stream) return *std::move(stream);
      return {Serialize(normal(), keep_alive), Reply::Delivery::kWhole};
    }
    // Faults apply from here on only: the API must always be able to switch them off.
    const std::optional<Fault> fault = faults.Take(PathOf(request), request.user);
    if (!fault) return {Serialize(normal(), keep_alive), Reply::Delivery::kWhole};
    Reply reply = MakeFaultyReply(*fault, request, keep_alive, normal);
    reply.fault = NameOf(fault->kind);
    reply.fault_number = fault->number;
    return reply;
  }

  void RecordReply(const RecordedRequest& request, const Reply& reply) override {
    std::optional<std::string> answer;  // none yet while the request stalls
    if (reply.delivery != Reply::Delivery::kStall) answer = reply.bytes;
    if (request.number != 0) log.SetReply(request, reply.fault, std::move(answer));
    if (request.number != 0 || request.method != "GET") NotifyPages();
  }

  // The order matters: the portal and the state file refer to accounts and devices.
  const std::string address;
  Clock clock;
  Accounts accounts;
  Devices devices;
  Portal portal;
  FaultList faults;
  RequestLog log;
  StateFile state_file;
  Urls urls;

 private:
  std::string Url(const char* scheme, std::size_t port_index) const {
    const bool is_v6 = address.find(':') != std::string::npos;
    return scheme + std::string("://") + (is_v6 ? "[" + address + "]" : address) + ":" +
           std::to_string(server_->port(port_index));
  }

  // The page and the API on any port, and everything on the API port. Gateways may use any host
  // name on their ports, as they would for a real portal behind a proxy.
  bool IsForPeople(const RecordedRequest& request) const {
    return request.number == 0 || request.port == server_->port(kApi);
  }

  // Whether a fault stands before the page on a port for gateways, which may ask for "/" to see
  // whether anybody answers. Such a request is recorded, and so it is a gateway's.
  bool IsFaultyRoot(const RecordedRequest& request) const {
    return PathOf(request) == "/" && request.port != server_->port(kApi) && faults.Names("/");
  }

  // The devices and faults that are there from the start.
  void AddFromOptions() {
    for (const std::string& gateway : options_.gateways) devices.Add(gateway);
    for (const Fault& fault : scenario_.faults) faults.Add(fault);
  }

  void Reset() {
    // Before the rest: requests that go on would change what begins now.
    server_->EndWaiting();
    ChangeSettings(options_.settings);
    accounts.Restore({});
    devices.Restore({});
    clock.Reset();
    faults.StartOver();
    log.StartOver();
    AddFromOptions();
    RefuseConnections(scenario_.is_refusing);
  }

  Settings settings() const {
    base::AutoLock lock(settings_lock_);
    return settings_;
  }

  void ChangeSettings(const Settings& settings) {
    {
      base::AutoLock lock(settings_lock_);
      settings_ = settings;
      accounts.SetPolicy(settings.tokens);
    }
    server_->SetLimits(settings.limits);
  }

  bool EndFault(std::uint64_t number) {
    const bool is_listed = faults.Remove(number);
    // A fault leaves the list at the last request that it applies to, which may still be stalled.
    if (number != 0) server_->ResumeStalled(number);
    return is_listed;
  }

  void AddRoutes() {
    router_.Add("GET", "/authorize", ShowSignIn);
    router_.Add("POST", "/authorize",
                [this](const RecordedRequest& request) { return Authorize(accounts, request); });
    router_.Add("POST", "/token",
                [this](const RecordedRequest& request) { return IssueTokens(accounts, request); });
    AddPortalRoute("/device/adduserdevice", &Portal::AddUserDevice);
    AddPortalRoute("/device/deleteuserdevice", &Portal::DeleteUserDevice);
    AddPortalRoute("/device/getuserdevice", &Portal::GetUserDevice);
    AddPortalRoute("/device/getntsserverinfo", &Portal::GetNtsServerInfo);
  }

  void AddPortalRoute(const char* path, Answer (Portal::*handler)(const RecordedRequest&)) {
    router_.Add("POST", path, [this, handler](const RecordedRequest& request) {
      return (portal.*handler)(request);
    });
  }

  Answer HandleAndSave(const RecordedRequest& request) {
    Answer answer = router_.Handle(request);
    // Saved before the answer is sent, so that no client holds a token that a restart would lose.
    try {
      state_file.Save();
    } catch (const std::exception& failure) {
      return PlainText(500, failure.what());
    }
    answer.header_lines.push_back("Date: " + HttpDate(clock.Now()));
    return answer;
  }

  const Options options_;
  Scenario scenario_;
  mutable base::Lock settings_lock_;
  Settings settings_ GUARDED_BY(settings_lock_);
  Router router_;
  std::atomic<bool> is_refusing_ = false;
  const ControlContext control_{
      .urls = urls,
      .accounts = accounts,
      .devices = devices,
      .log = log,
      .faults = faults,
      .clock = clock,
      .is_refusing = is_refusing_,
      .end_fault = [this](std::uint64_t number) { return EndFault(number); },
      .clear_faults = [this] { ClearFaults(); },
      .refuse_connections = [this](bool refuse) { RefuseConnections(refuse); },
      .settings = [this] { return settings(); },
      .change_settings = [this](const Settings& settings) { ChangeSettings(settings); },
      .reset = [this] { Reset(); }};
  LiveStream live_stream_{control_};
  std::unique_ptr<HttpServer> server_;  // last, as its thread uses all the others
};

std::unique_ptr<Cloud> Cloud::Start(const Options& options, std::string* error) {
  auto impl = std::make_unique<Impl>(options);
  if (!impl->Listen(error)) return nullptr;
  return std::unique_ptr<Cloud>(new Cloud(std::move(impl)));
}

Cloud::Cloud(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

Cloud::~Cloud() = default;

std::string Cloud::http_url() const { return impl_->urls.http; }

std::string Cloud::https_url() const { return impl_->urls.https; }

std::string Cloud::api_url() const { return impl_->urls.api; }

std::string Cloud::IssueCode(const std::string& user_id) {
  std::string code = impl_->accounts.IssueCode(user_id);
  impl_->NotifyPages();
  impl_->state_file.Save();
  return code;
}

std::string Cloud::UserGuid(const std::string& user_id) const {
  return impl_->accounts.GuidOf(user_id);
}

bool Cloud::AcceptsToken(const std::string& guid, const std::string& access_token) const {
  return impl_->accounts.AcceptsToken(guid, access_token);
}

std::string Cloud::PeerId(const std::string& physical_address) const {
  return PeerIdOf(physical_address);
}

void Cloud::AddGateway(const std::string& physical_address) {
  impl_->devices.Add(physical_address);
  impl_->NotifyPages();
  impl_->state_file.Save();
}

bool Cloud::IsRegistered(const std::string& guid, const std::string& physical_address) const {
  return impl_->devices.IsRegistered(guid, physical_address);
}

void Cloud::AdvanceClock(std::chrono::seconds step) {
  impl_->clock.Advance(step);
  impl_->NotifyPages();
}

void Cloud::AddFault(Fault fault) {
  impl_->faults.Add(std::move(fault));
  impl_->NotifyPages();
}

void Cloud::ClearFaults() { impl_->ClearFaults(); }

void Cloud::RefuseConnections(bool refuse) { impl_->RefuseConnections(refuse); }

std::vector<RecordedRequest> Cloud::requests() const { return impl_->log.requests(); }

void Cloud::ClearRequests() {
  impl_->log.Clear();
  impl_->NotifyPages();
}

bool Cloud::WaitForRequests(std::size_t count) const { return impl_->log.WaitFor(count); }

}  // namespace devcloud
