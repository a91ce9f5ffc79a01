// Treats a running gateway as no decent caller would: bus_attack ADDRESS SECONDS SEED. It ends with
// status 0 once it has done all, whatever it was answered; the gateway must bear it. With ADDRESS
// alone it is a polkit that never answers, until it is killed.
#include <sys/resource.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "bus/connection.h"
#include "bus/names.h"
#include "gateway/service/methods.h"

namespace gateway {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kCrowd = 2000;
constexpr int kUnread = 1000;
constexpr int kVanishing = 200;
constexpr uint64_t kNoReply = UINT64_MAX;
constexpr uint64_t kLongestWait = 60'000'000;  // microseconds

std::string address;
std::mt19937 random_numbers;

size_t Below(size_t limit) {
  return std::uniform_int_distribution<size_t>(0, limit - 1)(random_numbers);
}

[[noreturn]] void Die(const std::string& what) {
  std::fprintf(stderr, "bus_attack: %s\n", what.c_str());
  std::exit(1);
}

bus::ConnectionPtr Connect() {
  std::string error;
  bus::ConnectionPtr connection = bus::Connect(address, &error);
  if (connection == nullptr) Die(error);
  sd_bus_set_method_call_timeout(connection.get(), kLongestWait);
  return connection;
}

bus::MessagePtr NewCall(sd_bus* connection, const std::string& interface,
                        const std::string& member) {
  sd_bus_message* made = nullptr;
  sd_bus_message_new_method_call(connection, &made, bus::kService, bus::kObject, interface.c_str(),
                                 member.c_str());
  return bus::MessagePtr(made);
}

std::string InterfaceOf(const Method& method) { return bus::kInterfacePrefix + method.group; }

// A call with arguments that it takes.
bus::MessagePtr GoodCall(sd_bus* connection, const Method& method) {
  bus::MessagePtr call = NewCall(connection, InterfaceOf(method), method.name);
  for (const Method::Value& value : method.takes) {
    if (value.signature == "i") {
      sd_bus_message_append(call.get(), "i", 30);
    } else {
      sd_bus_message_append(call.get(), value.signature.c_str(), "x");
    }
  }
  return call;
}

int OnReply(sd_bus_message* reply, void* count, sd_bus_error* /*error*/) {
  if (sd_bus_message_is_method_error(reply, SD_BUS_ERROR_TIMEOUT) > 0) Die("a caller has no reply");
  ++*static_cast<int*>(count);
  return 0;
}

// All connections are there at once, each with a call.
void Crowd() {
  std::vector<bus::ConnectionPtr> crowd;
  int replies = 0;
  for (int i = 0; i < kCrowd; ++i) {
    crowd.push_back(Connect());
    sd_bus_call_method_async(crowd.back().get(), nullptr, bus::kService, bus::kObject,
                             "org.qorn.Accounts1.Users", "GetUserUUIDFromUserID", &OnReply,
                             &replies, "s", "ann");
  }
  for (int i = 0; i < kCrowd; ++i) {
    sd_bus* const each = crowd[static_cast<size_t>(i)].get();
    while (replies <= i) {
      const int result = sd_bus_process(each, nullptr);
      if (result < 0) Die("a connection of the crowd was lost");
      if (result == 0) sd_bus_wait(each, kLongestWait);
    }
  }
  std::printf("%d callers at once, %d replies\n", kCrowd, replies);
}

// Calls whose replies nobody reads. A neighbour is answered all the same.
void Unread() {
  const bus::ConnectionPtr careless = Connect(), neighbour = Connect();
  for (int i = 0; i < kUnread; ++i) {
    sd_bus_call_method_async(careless.get(), nullptr, bus::kService, bus::kObject,
                             "org.qorn.Accounts1.Users", "ListUsers", &OnReply, nullptr, "");
  }
  sd_bus_flush(careless.get());
  sd_bus_error error{};
  sd_bus_call_method(neighbour.get(), bus::kService, bus::kObject, "org.qorn.Accounts1.Users",
                     "GetUserUUIDFromUserID", &error, nullptr, "s", "ann");
  const std::string name = error.name == nullptr ? "" : error.name;
  sd_bus_error_free(&error);
  // Of the same user, so that the guard may refuse it.
  if (!name.starts_with(bus::kErrorPrefix) && name != bus::kAccessDenied &&
      name != bus::kLimitsExceeded) {
    Die("a neighbour of unread replies got '" + name + "'");
  }
  std::printf("%d replies left unread\n", kUnread);
}

// Each method is called by somebody who has left before the reply.
void Vanish() {
  for (int i = 0; i < kVanishing; ++i) {
    const bus::ConnectionPtr connection = Connect();
    const Method& method = Methods()[static_cast<size_t>(i) % Methods().size()];
    const bus::MessagePtr call = GoodCall(connection.get(), method);
    sd_bus_message_set_allow_interactive_authorization(call.get(), i % 2);
    sd_bus_call_async(connection.get(), nullptr, call.get(), &OnReply, nullptr, kNoReply);
    sd_bus_flush(connection.get());
  }
  std::printf("%d callers gone before the reply\n", kVanishing);
}

std::string RandomText() {
  static const std::array<std::string, 8> kTexts = {
      "", "ann", "qornsystem", "104", "a\nb", "\xc2\x85", "%s%n", std::string(70'000, 'x')};
  return kTexts[Below(kTexts.size())];
}

// Appends a value of a random type.
void AppendRandom(sd_bus_message* message) {
  static const std::string kTypes = "sssssiiybnqiuxtdogav";
  const char type = kTypes[Below(kTypes.size())];
  const uint64_t number = random_numbers();
  const std::string text = type == 'o' ? "/a" : type == 'g' ? "as" : RandomText();
  if (type == 'a' || type == 'v') {
    sd_bus_message_open_container(message, type, "s");
    sd_bus_message_append_basic(message, 's', text.c_str());
    sd_bus_message_close_container(message);
  } else if (type == 's' || type == 'o' || type == 'g') {
    sd_bus_message_append_basic(message, type, text.c_str());
  } else {
    sd_bus_message_append_basic(message, type, &number);
  }
}

bus::MessagePtr RandomCall(sd_bus* connection) {
  static const std::array<const char*, 5> kOthers = {
      "org.freedesktop.DBus.Properties", "org.freedesktop.DBus.Introspectable",
      "org.freedesktop.DBus.Peer", "org.qorn.Accounts1.Gateway", "org.qorn.Nothing"};
  static const std::array<const char*, 6> kMembers = {"Get",        "GetAll", "Set",
                                                      "Introspect", "Ping",   "SignIn"};
  const Method& method = Methods()[Below(Methods().size())];
  if (Below(4) == 0) return GoodCall(connection, method);
  const bool own = Below(3) != 0;
  bus::MessagePtr call =
      NewCall(connection, own ? InterfaceOf(method) : kOthers[Below(kOthers.size())],
              own ? method.name : kMembers[Below(kMembers.size())]);
  for (size_t i = Below(4); i > 0; --i) AppendRandom(call.get());
  return call;
}

void SendRandomCalls(Clock::time_point end) {
  int calls = 0, replies = 0;
  bus::ConnectionPtr connection = Connect();
  for (; Clock::now() < end; ++calls) {
    if (Below(500) == 0) connection = Connect();
    const bus::MessagePtr call = RandomCall(connection.get());
    if (Below(8) == 0) {
      sd_bus_send(connection.get(), call.get(), nullptr);
    } else {
      sd_bus_call_async(connection.get(), nullptr, call.get(), &OnReply, &replies, kNoReply);
    }
    // Now and then all that has come is read, so that not all runs into the bus's limits.
    while (Below(4) != 0 && sd_bus_process(connection.get(), nullptr) > 0) continue;
  }
  std::printf("%d random calls, %d replies read\n", calls, replies);
}

[[noreturn]] void BeSilentPolkit() {
  const bus::ConnectionPtr connection = Connect();
  sd_bus_add_filter(
      connection.get(), nullptr, [](sd_bus_message*, void*, sd_bus_error*) { return 1; }, nullptr);
  if (sd_bus_request_name(connection.get(), "org.freedesktop.PolicyKit1", 0) < 0) Die("no name");
  std::puts("ready");
  std::fflush(stdout);
  while (true) {
    if (sd_bus_process(connection.get(), nullptr) < 0) Die("the bus is gone");
    sd_bus_wait(connection.get(), kLongestWait);
  }
}

void Attack(std::chrono::seconds time) {
  rlimit files{};
  getrlimit(RLIMIT_NOFILE, &files);
  files.rlim_cur = files.rlim_max;
  setrlimit(RLIMIT_NOFILE, &files);
  Crowd();
  Unread();
  Vanish();
  SendRandomCalls(Clock::now() + time);
}

}  // namespace
}  // namespace gateway

int main(int argc, char** argv) {
  if (argc != 2 && argc != 4) return 2;
  gateway::address = argv[1];
  if (argc == 2) gateway::BeSilentPolkit();
  gateway::random_numbers.seed(static_cast<unsigned>(std::atoi(argv[3])));
  gateway::Attack(std::chrono::seconds(std::atoi(argv[2])));
  return 0;
}
