#include "client/src/remote.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <future>
#include <utility>

#include "bus/names.h"
#include "gateway/operations/events.h"

namespace qorn {
namespace {

constexpr int kLongestWait = 60;
constexpr std::chrono::seconds kFirstRetry{1};
constexpr std::chrono::seconds kLongestRetry{60};
constexpr char kWaitText[] = "try again in ";

// The seconds in the text of a refusal; 0 when there are none.
int SecondsToWait(const std::string& text) {
  const size_t at = text.find(kWaitText);
  int seconds = 0;
  if (at != std::string::npos) {
    std::from_chars(text.data() + at + std::strlen(kWaitText), text.data() + text.size(), seconds);
  }
  return std::clamp(seconds, 0, kLongestWait);
}

int AppendArguments(sd_bus_message* message, const std::vector<Argument>& arguments) {
  int result = 0;
  for (size_t i = 0; i < arguments.size() && result >= 0; ++i) {
    const Argument& argument = arguments[i];
    if (argument.text == nullptr) {
      result = sd_bus_message_append_basic(message, 'i', &argument.number);
    } else if (argument.text->find('\0') != std::string::npos) {
      result = -EINVAL;
    } else {
      result = sd_bus_message_append_basic(message, 's', argument.text->c_str());
    }
  }
  return result;
}

Result Failure(const std::string& what, int error) {
  return {.error = SD_BUS_ERROR_FAILED, .text = what + ": " + std::strerror(-error)};
}

Result ReadReply(sd_bus_message* reply, const Call& call) {
  if (reply == nullptr) return {.error = SD_BUS_ERROR_DISCONNECTED, .text = "the bus is gone"};
  const sd_bus_error* const error = sd_bus_message_get_error(reply);
  if (error != nullptr) {
    return {.error = error->name, .text = error->message == nullptr ? "" : error->message};
  }
  if (call.read(reply)) return {};
  return {.error = SD_BUS_ERROR_FAILED,
          .text = "the gateway's answer to " + call.member + " cannot be read"};
}

}  // namespace

Remote::~Remote() {
  loop_.Quit();
  if (thread_.joinable()) thread_.join();
}

bool Remote::Start(std::string* error) {
  if (!Connect(error)) return false;
  thread_ = std::thread([this] { loop_.Run(); });
  return true;
}

bool Remote::Connect(std::string* error) {
  bus::ConnectionPtr connection = bus::Connect(options_.address, error);
  if (connection == nullptr) return false;
  const int result = sd_bus_match_signal(connection.get(), nullptr, bus::kService, bus::kObject,
                                         nullptr, nullptr, &OnSignal, this);
  if (result < 0) {
    *error = Failure("no events from the bus " + options_.address, result).text;
    return false;
  }
  connection_ = std::move(connection);
  loop_.Use(connection_.get(), [this](int) { OnLost(); });
  return true;
}

// Listeners want to hear again without a call.
void Remote::OnLost() {
  pending_.Fail();
  connection_.reset();
  Reconnect(kFirstRetry);
}

void Remote::Reconnect(std::chrono::seconds pause) {
  loop_.PostAt(bus::Loop::Clock::now() + pause, [this, pause] {
    std::string error;
    // A call may have connected meanwhile.
    if (connection_ != nullptr || Connect(&error)) return;
    Reconnect(std::min(2 * pause, kLongestRetry));
  });
}

Result Remote::Send(const Call& call) {
  Result result = SendOnce(call);
  const int seconds = result.error == bus::kLimitsExceeded ? SecondsToWait(result.text) : 0;
  if (seconds == 0) return result;
  if (options_.on_wait) {
    options_.on_wait("the gateway is asked too much; waiting for " + std::to_string(seconds) +
                     (seconds == 1 ? " second" : " seconds"));
  }
  std::this_thread::sleep_for(std::chrono::seconds(seconds));
  return SendOnce(call);
}

Result Remote::SendOnce(const Call& call) {
  // The client's own thread would wait for itself.
  if (std::this_thread::get_id() == thread_.get_id()) {
    return {.error = SD_BUS_ERROR_FAILED, .text = "listeners must not call the gateway"};
  }
  std::promise<Result> promise;
  loop_.Post(
      [&] { SendNow(call, [&promise](const Result& result) { promise.set_value(result); }); });
  return promise.get_future().get();
}

void Remote::SendNow(const Call& call, const Then& then) {
  std::string error;
  if (connection_ == nullptr && !Connect(&error)) {
    return then({.error = SD_BUS_ERROR_DISCONNECTED, .text = error});
  }
  sd_bus_message* made = nullptr;
  int result = sd_bus_message_new_method_call(connection_.get(), &made, bus::kService, bus::kObject,
                                              call.interface.c_str(), call.member.c_str());
  const bus::MessagePtr message(made);
  if (result >= 0) result = AppendArguments(made, call.arguments);
  if (result == -EINVAL) {
    return then({.error = bus::kInvalidArgs,
                 .text = "an argument of " + call.member + " is not UTF-8 or holds a zero byte"});
  }
  if (result >= 0)
    result = sd_bus_message_set_allow_interactive_authorization(made, call.interactive);
  if (result >= 0) {
    result = pending_.Send(connection_.get(), made, options_.timeout,
                           [&call, then](sd_bus_message* reply) { then(ReadReply(reply, call)); });
  }
  if (result < 0) then(Failure(call.member + " cannot be sent", result));
}

int Remote::OnSignal(sd_bus_message* signal, void* remote, sd_bus_error* /*error*/) {
  // The bus hands out broadcasts of the gateway alone; anybody may send a signal to one connection.
  if (sd_bus_message_get_destination(signal) != nullptr) return 0;
  const char* const member = sd_bus_message_get_member(signal);
  for (const gateway::EventKind& kind : gateway::EventKinds()) {
    if (std::strcmp(kind.signal, member) != 0) continue;
    ClientEvent event{.type = kind.type, .name = kind.name, .fields = {}};
    for (const gateway::Parameter& argument : gateway::SharedPayload(kind)) {
      const char* text = nullptr;
      if (sd_bus_message_read_basic(signal, 's', static_cast<void*>(&text)) <= 0) break;
      event.fields.emplace_back(argument.name, text);
    }
    static_cast<Remote*>(remote)->Deliver(event);
  }
  return 0;
}

void Remote::Deliver(const ClientEvent& event) {
  base::AutoLock hold(lock_);
  for (const auto& [number, listener] : listeners_) listener(event);
}

int Remote::AddListener(std::function<void(const ClientEvent&)> listener) {
  base::AutoLock hold(lock_);
  listeners_.emplace(next_listener_, std::move(listener));
  return next_listener_++;
}

void Remote::RemoveListener(int number) {
  base::AutoLock hold(lock_);
  listeners_.erase(number);
}

}  // namespace qorn
