#include "gateway/service/bus_service.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <utility>

#include "bus/connection.h"
#include "bus/loop.h"
#include "bus/names.h"
#include "gateway/service/calls.h"
#include "gateway/service/properties.h"
#include "gateway/service/signals.h"
#include "gateway/service/tables.h"

namespace gateway {
namespace {

// The component tries once a minute to fetch its network setting.
constexpr std::chrono::seconds kBetweenLooks{60};
constexpr std::chrono::seconds kFirstRetry{1};
constexpr std::chrono::seconds kFlushTime{5};
constexpr uint64_t kFlushPause = 100'000;  // microseconds
constexpr std::chrono::seconds kLongestRetry{60};

}  // namespace

class BusService::Impl {
 public:
  Impl(const Options& options, const Parts& parts);
  ~Impl();

  // Before the thread runs, and again on it when the bus has gone.
  bool Connect(std::string* error);
  void Run();
  void Stop();
  void NoteEvent(const SeenEvent& event);
  void NoteSignInNeeded(const std::string& user_uuid, const std::string& user_id, bool needed);

 private:
  static int OnMethod(sd_bus_message* message, void* impl, sd_bus_error* error);
  static int OnAnyMessage(sd_bus_message* message, void* impl, sd_bus_error* error);
  static int OnProperty(sd_bus* connection, const char* path, const char* interface,
                        const char* property, sd_bus_message* reply, void* impl,
                        sd_bus_error* error);
  void OnLost(int error);
  void Reconnect(std::chrono::seconds pause);
  void OnChange(const Method& method);
  void LookForNetwork();
  // Writes what is not written yet, as far as the bus takes it in time.
  void Flush();

  const Options options_;
  const Parts parts_;
  bus::Loop loop_;
  Properties properties_;
  Calls calls_;
  bus::ConnectionPtr connection_;
  std::string retry_error_;  // the latest that was reported
  std::thread thread_;
};

BusService::Impl::Impl(const Options& options, const Parts& parts)
    : options_(options),
      parts_(parts),
      properties_(parts_.accounts, parts_.seen_ids, parts_.sign_in_needed),
      calls_({.loop = &loop_,
              .sources = {.accounts = parts_.accounts, .metrics = parts_.metrics},
              .audit = parts_.audit,
              .flush_events = parts_.flush_events,
              .on_change = [this](const Method& method) { OnChange(method); },
              .on_refusal = parts_.on_refusal},
             options.limits, options.group) {}

BusService::Impl::~Impl() { Stop(); }

void BusService::Impl::Stop() {
  if (!thread_.joinable()) return;
  loop_.Post([this] { calls_.Stop([this] { loop_.Quit(); }); });
  thread_.join();
  Flush();
}

bool BusService::Impl::Connect(std::string* error) {
  bus::ConnectionPtr connection = bus::Connect(options_.address, error);
  if (connection == nullptr) return false;
  int result =
      AddInterfaces(connection.get(), {.method = &OnMethod, .property = &OnProperty}, this);
  if (result >= 0) result = sd_bus_add_filter(connection.get(), nullptr, &OnAnyMessage, this);
  if (result >= 0) result = calls_.Use(connection.get());
  if (result >= 0) result = sd_bus_request_name(connection.get(), bus::kService, 0);
  if (result < 0) {
    *error = "the name " + std::string(bus::kService) + " cannot be had on the bus " +
             options_.address + ": " +
             (result == -EEXIST ? "another program has it" : std::strerror(-result));
    return false;
  }
  connection_ = std::move(connection);
  loop_.Use(connection_.get(), [this](int lost) { OnLost(lost); });
  return true;
}

void BusService::Impl::Run() {
  LookForNetwork();
  thread_ = std::thread([this] { loop_.Run(); });
}

void BusService::Impl::NoteEvent(const SeenEvent& event) {
  loop_.Post([this, event] {
    if (connection_ != nullptr) EmitSignal(connection_.get(), event);
  });
}

void BusService::Impl::NoteSignInNeeded(const std::string& user_uuid, const std::string& user_id,
                                        bool needed) {
  loop_.Post([this, user_uuid, user_id, needed] {
    if (connection_ == nullptr) return;
    if (needed) EmitSignInNeeded(connection_.get(), user_uuid, user_id);
    properties_.AnnounceSignInNeeded(connection_.get());
  });
}

int BusService::Impl::OnMethod(sd_bus_message* message, void* impl, sd_bus_error* /*error*/) {
  const char* const interface = sd_bus_message_get_interface(message);
  const Method* const method = FindMethod(interface + std::strlen(bus::kInterfacePrefix),
                                          sd_bus_message_get_member(message));
  static_cast<Impl*>(impl)->calls_.Take(*method, message);
  return 1;
}

int BusService::Impl::OnAnyMessage(sd_bus_message* message, void* impl, sd_bus_error* /*error*/) {
  Impl& self = *static_cast<Impl*>(impl);
  if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0) return 0;
  const char* const path = sd_bus_message_get_path(message);
  if (path == nullptr || std::strcmp(path, bus::kObject) != 0) return 0;
  const Method* const reader = self.properties_.FindReader(message);
  if (reader == nullptr) return 0;
  self.calls_.Take(*reader, message);
  return 1;
}

int BusService::Impl::OnProperty(sd_bus* /*connection*/, const char* /*path*/,
                                 const char* /*interface*/, const char* property,
                                 sd_bus_message* reply, void* impl, sd_bus_error* /*error*/) {
  return static_cast<Impl*>(impl)->properties_.Append(property, reply);
}

void BusService::Impl::OnLost(int error) {
  parts_.report(std::string("the bus is gone (") + std::strerror(error) +
                "); the gateway works on and looks for it");
  retry_error_.clear();
  calls_.Lose();
  connection_.reset();
  Reconnect(kFirstRetry);
}

void BusService::Impl::Reconnect(std::chrono::seconds pause) {
  loop_.PostAt(bus::Loop::Clock::now() + pause, [this, pause] {
    std::string error;
    if (Connect(&error)) return parts_.report("the bus is back");
    if (std::exchange(retry_error_, error) != error) parts_.report(error);
    Reconnect(std::min(2 * pause, kLongestRetry));
  });
}

void BusService::Impl::Flush() {
  const auto end = bus::Loop::Clock::now() + kFlushTime;
  uint64_t left = 0;
  while (connection_ != nullptr && bus::Loop::Clock::now() < end &&
         sd_bus_get_n_queued_write(connection_.get(), &left) >= 0 && left > 0) {
    const int result = sd_bus_process(connection_.get(), nullptr);
    if (result < 0) return;
    if (result == 0) sd_bus_wait(connection_.get(), kFlushPause);
  }
}

void BusService::Impl::OnChange(const Method& method) {
  if (connection_ != nullptr && method.name == "SetSessionLifetime") {
    properties_.AnnounceLifetime(connection_.get());
  }
}

void BusService::Impl::LookForNetwork() {
  if (connection_ != nullptr) properties_.AnnounceNetworkStatus(connection_.get());
  if (properties_.network_is_set()) return;
  loop_.PostAt(bus::Loop::Clock::now() + kBetweenLooks, [this] { LookForNetwork(); });
}

BusService::BusService(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
BusService::~BusService() = default;

bool BusService::IsBuilt() { return true; }

std::unique_ptr<BusService> BusService::Start(const Options& options, const Parts& parts,
                                              std::string* error) {
  auto impl = std::make_unique<Impl>(options, parts);
  if (!impl->Connect(error)) return nullptr;
  impl->Run();
  return std::unique_ptr<BusService>(new BusService(std::move(impl)));
}

void BusService::Stop() { impl_->Stop(); }

void BusService::NoteEvent(const SeenEvent& event) { impl_->NoteEvent(event); }

void BusService::NoteSignInNeeded(const std::string& user_uuid, const std::string& user_id,
                                  bool needed) {
  impl_->NoteSignInNeeded(user_uuid, user_id, needed);
}

}  // namespace gateway
