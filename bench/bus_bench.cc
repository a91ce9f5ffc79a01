// Calls of a running gateway over the bus, beside those of a bare sd-bus service that echoes its
// argument on the same bus. bench/bus_figures.py starts all of them. The time of a call is the
// whole time divided by the calls of all callers.
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "bench/compare.h"
#include "bench/home.h"
#include "bus/connection.h"
#include "bus/names.h"

namespace bench {
namespace {

constexpr char kEcho[] = "org.qorn.Bench";
constexpr char kEchoObject[] = "/org/qorn/Bench";
constexpr auto kTime = std::chrono::milliseconds(100);

std::string Environment(const char* name) {
  const char* const value = std::getenv(name);
  Require(value != nullptr, name);
  return value;
}

// A method that takes one text.
struct Target {
  const char* service;
  const char* object;
  const char* interface;
  const char* method;
  std::string text;
};

const Target kEchoTarget{kEcho, kEchoObject, kEcho, "Echo", "6d1c2a52-6f0b-4f0e-a3ac-0f3b7f6c4b51"};

bus::ConnectionPtr Connect() {
  std::string error;
  bus::ConnectionPtr connection = bus::Connect(Environment("QORN_BENCH_BUS"), &error);
  if (connection == nullptr) Die(error);
  return connection;
}

void Call(sd_bus* connection, const Target& target) {
  sd_bus_error error{};
  sd_bus_message* reply = nullptr;
  const int result = sd_bus_call_method(connection, target.service, target.object, target.interface,
                                        target.method, &error, &reply, "s", target.text.c_str());
  if (result < 0) Die(std::string(target.method) + ": " + (error.message ? error.message : "?"));
  sd_bus_message_unref(reply);
}

// Callers with a connection each, who call again as soon as they have their reply.
class Callers {
 public:
  explicit Callers(long count) {
    for (long i = 0; i < count; ++i) connections_.push_back(Connect());
  }

  std::chrono::nanoseconds TimeOfCall(const Target& target) {
    std::atomic<long> calls{0};
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    const auto begin = std::chrono::steady_clock::now();
    for (const bus::ConnectionPtr& connection : connections_) {
      threads.emplace_back([&] {
        long made = 0;
        for (; !stop; ++made) Call(connection.get(), target);
        calls += made;
      });
    }
    std::this_thread::sleep_for(kTime);
    stop = true;
    for (std::thread& thread : threads) thread.join();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() -
                                                                begin) /
           std::max(1L, calls.load());
  }

 private:
  std::vector<bus::ConnectionPtr> connections_;
};

void Run(benchmark::State& state, const Target& target) {
  Callers callers(state.range(0));
  Times ours, floor;
  bool ours_first = false;
  for ([[maybe_unused]] auto iteration : state) {
    ours_first = !ours_first;
    if (ours_first) ours.Add(callers.TimeOfCall(target), 1);
    floor.Add(callers.TimeOfCall(kEchoTarget), 1);
    if (!ours_first) ours.Add(callers.TimeOfCall(target), 1);
    state.SetIterationTime(std::chrono::duration<double>(kTime).count());
  }
  state.counters["ours_ns"] = ours.Median();
  state.counters["floor_ns"] = floor.Median();
}

Target Accounts(const char* interface, const char* method, const std::string& text) {
  return {bus::kService, bus::kObject, interface, method, text};
}

void Check(benchmark::State& state) {
  Run(state, Accounts("org.qorn.Accounts1.Sessions", "CheckSessionValidation",
                      Environment("QORN_BENCH_SESSION")));
}
void LookUp(benchmark::State& state) {
  Run(state, Accounts("org.qorn.Accounts1.Users", "GetUserUUIDFromUserID",
                      Environment("QORN_BENCH_USER")));
}
// Another account service, on the same bus.
void Peer(benchmark::State& state) {
  Run(state, {"org.freedesktop.Accounts", "/org/freedesktop/Accounts", "org.freedesktop.Accounts",
              "FindUserByName", "root"});
}

void CallerCounts(benchmark::internal::Benchmark* made) {
  made->ArgName("callers")->UseManualTime();
  for (const long callers : {1L, 8L, 64L}) made->Arg(callers);
}

BENCHMARK(Check)->Name("bus/check")->Apply(CallerCounts);
BENCHMARK(LookUp)->Name("bus/lookup")->Apply(CallerCounts);
BENCHMARK(Peer)->Name("bus-peer/FindUserByName")->Apply(CallerCounts);

int OnEcho(sd_bus_message* message, void* /*data*/, sd_bus_error* /*error*/) {
  const char* text = nullptr;
  sd_bus_message_read(message, "s", &text);
  return sd_bus_reply_method_return(message, "s", text);
}

// Until it is killed.
[[noreturn]] void Echo() {
  static const sd_bus_vtable kTable[] = {
      SD_BUS_VTABLE_START(0), SD_BUS_METHOD("Echo", "s", "s", &OnEcho, SD_BUS_VTABLE_UNPRIVILEGED),
      SD_BUS_VTABLE_END};
  const bus::ConnectionPtr connection = Connect();
  sd_bus* const bus = connection.get();
  Require(sd_bus_add_object_vtable(bus, nullptr, kEchoObject, kEcho, kTable, nullptr) >= 0 &&
              sd_bus_request_name(bus, kEcho, 0) >= 0,
          "the echo cannot be offered");
  while (true) {
    const int result = sd_bus_process(bus, nullptr);
    Require(result >= 0, "the bus is gone");
    if (result == 0) sd_bus_wait(bus, UINT64_MAX);
  }
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--echo") == 0) bench::Echo();
  return bench::RunBenchmarks(argc, argv);
}
