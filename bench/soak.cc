// Uses an account service for a long time: soak MINUTES CONFIG COMPONENT API-URL. The configuration
// names a development cloud, whose API is at the URL; faults are put into it. Ends with status 1
// when an operation gave a code that it cannot give here, when descriptors or threads were left
// over or when memory grew by more than the allowance.
#include <curl/curl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <thread>

#include "base/logging.h"
#include "base/test_clock.h"
#include "base/time.h"
#include "bench/random_steps.h"
#include "gateway/console/request_code.h"
#include "gateway/host/host.h"
#include "gateway/process/proxies.h"

namespace soak {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr unsigned kThreads = 8;
constexpr unsigned kStableUsers = 50;
// What the heap keeps back for reuse, above all while eight threads are still new to it.
constexpr long kAllowedKiB = 16L * 1024;
// An invitation is kept until the component ends.
constexpr long kBytesPerInvitation = 512;

constexpr const char* kFaults[] = {
    R"({"kind":"status","status":503,"path":"/token","times":3})",
    R"({"kind":"status","status":400,"path":"*","times":5})",
    R"({"kind":"reset_after","bytes":40,"path":"/token","times":4})",
    R"({"kind":"truncate_after","bytes":200,"path":"/device/adduserdevice","times":4})",
    R"({"kind":"body","body":"{","bytes":1000000,"path":"/token","times":2})",
    R"({"kind":"drip","path":"/token","times":8})",
    R"({"kind":"stall","path":"/token","times":2})",
    R"({"kind":"refuse"})",
};

// What one operation took and answered.
struct Tally {
  std::array<std::atomic<long>, 20> codes{};
  std::array<std::atomic<long>, 240> times{};  // eight for each doubling of the microseconds
  std::atomic<long> calls{0};

  void Add(int code, SteadyClock::duration time) {
    const double microseconds = std::chrono::duration<double, std::micro>(time).count();
    const double bucket = std::clamp(8 * std::log2(microseconds), 0.0, 239.0);
    ++codes[static_cast<size_t>(code)];
    ++times[static_cast<size_t>(bucket)];
    ++calls;
  }
  // The time that this percentage of the calls did not exceed.
  double Milliseconds(long percent) const {
    size_t bucket = 0;
    for (long left = calls * percent / 100; bucket < 239 && (left -= times[bucket]) > 0;) ++bucket;
    return std::exp2(static_cast<double>(bucket + 1) / 8) / 1000;
  }
};

class CountedSteps : public RandomSteps {
 public:
  using RandomSteps::RandomSteps;

  const Tally& tally(const gateway::Operation& operation) const {
    return tallies_[Place(operation)];
  }

 protected:
  void Call(const gateway::Operation& operation, const Words& words,
            gateway::Answer* answer) override {
    const auto begin = SteadyClock::now();
    RandomSteps::Call(operation, words, answer);
    tallies_[Place(operation)].Add(answer->code, SteadyClock::now() - begin);
  }

 private:
  static size_t Place(const gateway::Operation& operation) {
    return static_cast<size_t>(&operation - gateway::Operations().data());
  }

  std::array<Tally, 40> tallies_;
};

// The store is there and nobody else's, the bus takes every event and memory suffices.
bool IsExpected(const gateway::Operation& operation, int code) {
  const std::string name = operation.name;
  if (code == 3 || code == 4) return false;
  if (code == 19) return name == "RefreshAccessToken";
  if (name == "GetNetworkSettingStatus") return code == 1;
  const std::vector<int>& results = operation.results;
  return std::find(results.begin(), results.end(), code) != results.end();
}

// Prints a row for each operation; false when a code is among them that is not expected.
bool ShowTallies(const CountedSteps& steps) {
  bool good = true;
  std::printf("%-52s %9s %8s %8s  %s\n", "operation", "calls", "p50 ms", "p99 ms", "calls by code");
  for (const gateway::Operation& operation : gateway::Operations()) {
    const Tally& tally = steps.tally(operation);
    std::printf("%-52s %9ld %8.3f %8.3f ", operation.name, tally.calls.load(),
                tally.Milliseconds(50), tally.Milliseconds(99));
    for (int code = 0; code < 20; ++code) {
      const long count = tally.codes[static_cast<size_t>(code)];
      if (count == 0) continue;
      const bool expected = IsExpected(operation, code);
      std::printf(" %d: %ld%s", code, count, expected ? "" : " UNEXPECTED");
      good = good && expected;
    }
    std::printf("\n");
  }
  return good;
}

struct Use {
  long kib, descriptors, threads;
};

long Entries(const char* folder) {
  return std::distance(std::filesystem::directory_iterator(folder), {});
}

Use Measure() {
  long pages = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  return {resident * sysconf(_SC_PAGESIZE) / 1024, Entries("/proc/self/fd"),
          Entries("/proc/self/task")};
}

void Show(const char* when, const Use& use) {
  std::printf("%-22s %8ld KiB resident, %3ld descriptors, %2ld threads\n", when, use.kib,
              use.descriptors, use.threads);
  std::fflush(stdout);
}

void SetFault(const std::string& api_url, const char* method, const char* json) {
  const std::unique_ptr<CURL, void (*)(CURL*)> curl(curl_easy_init(), curl_easy_cleanup);
  curl_easy_setopt(curl.get(), CURLOPT_URL, (api_url + "/api/faults").c_str());
  curl_easy_setopt(curl.get(), CURLOPT_CUSTOMREQUEST, method);
  curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDS, json);
  curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(
      curl.get(), CURLOPT_WRITEFUNCTION, +[](char*, size_t, size_t count, void*) { return count; });
  if (curl_easy_perform(curl.get()) != CURLE_OK) std::fprintf(stderr, "soak: no fault was set\n");
}

// Faults, the clock's minutes and factory resets, until `end`.
void Disturb(SteadyClock::time_point end, const std::string& api_url, base::TestClock* clock,
             CountedSteps* steps) {
  std::mt19937 random(kThreads);
  for (int second = 1; SteadyClock::now() < end; ++second) {
    SetFault(api_url, "POST", kFaults[random() % std::size(kFaults)]);
    std::this_thread::sleep_for(std::chrono::milliseconds(200));  // The load, not an order.
    SetFault(api_url, "DELETE", "");
    std::this_thread::sleep_for(std::chrono::milliseconds(800));
    clock->Advance(base::TimeDelta::FromSeconds(60));
    if (second % 20 != 0) continue;
    steps->Do("do-factory-reset", {});
    steps->MakeStableUsers();
  }
}

// From here until `end` from all threads; gives what was in use after the first tenth.
Use Work(std::chrono::seconds time, const std::string& api_url, base::TestClock* clock,
         CountedSteps* steps, long* invitations) {
  const auto end = SteadyClock::now() + time;
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < kThreads; ++t) {
    threads.emplace_back([=] {
      std::mt19937 random(t);
      const std::string own = "own" + std::to_string(t) + "@x";
      while (SteadyClock::now() < end) steps->Step(static_cast<unsigned>(random()), own);
    });
  }
  threads.emplace_back([=, &api_url] { Disturb(end, api_url, clock, steps); });
  std::this_thread::sleep_for(time / 10);
  const Use use = Measure();
  *invitations = steps->tally(*gateway::FindCommandOperation("add-friend-candidate")).codes[1];
  Show("after a tenth", use);
  for (std::thread& thread : threads) thread.join();
  SetFault(api_url, "DELETE", "");
  return use;
}

int Run(double minutes, const std::string& config, const std::string& component,
        const std::string& api_url) {
  gateway::ForgetProxies();
  curl_global_init(CURL_GLOBAL_DEFAULT);
  logging::SetLogMessageHandler(
      [](int, const char*, int, size_t, const std::string&) { return true; });
  base::TestClock clock;
  std::string error;
  std::unique_ptr<gateway::Host> host = gateway::Host::Start(config, {component}, &error);
  if (host == nullptr) {
    std::fprintf(stderr, "soak: %s\n", error.c_str());
    return 2;
  }
  const std::string server = host->ConfigOption("account_zep_auth_url");
  const auto code = [&server](const std::string& user) {
    std::string made, failure;
    gateway::RequestCode(
        server, user, [] { return false; }, &made, &failure);
    return made;
  };
  clock.WaitForSleepers(1);  // The network setting is fetched.
  std::string own_peer_id, other;
  host->accounts()->GetNTSServerInfoAndPeerID(&other, &other, &other, &other, &other, &own_peer_id);
  CountedSteps steps(*host->accounts(), kStableUsers, code, own_peer_id);
  steps.MakeStableUsers();
  const Use start = Measure();
  Show("at the start", start);
  long early_invitations = 0;
  const auto seconds = std::chrono::seconds(static_cast<long>(minutes * 60));
  const Use warm = Work(seconds, api_url, &clock, &steps, &early_invitations);
  const Use end = Measure();
  Show("at the end", end);
  bool good = ShowTallies(steps);
  const long invitations =
      steps.tally(*gateway::FindCommandOperation("add-friend-candidate")).codes[1];
  const long allowed = kAllowedKiB + (invitations - early_invitations) * kBytesPerInvitation / 1024;
  std::printf("memory grew by %ld KiB, %ld KiB are allowed\n", end.kib - warm.kib, allowed);
  good = good && end.kib - warm.kib <= allowed && end.descriptors <= start.descriptors &&
         end.threads <= start.threads;
  host.reset();
  Show("after the component", Measure());
  std::printf("%s\n", good ? "good" : "NOT GOOD");
  return good ? 0 : 1;
}

}  // namespace
}  // namespace soak

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fprintf(stderr, "usage: soak MINUTES CONFIG COMPONENT API-URL\n");
    return 2;
  }
  return soak::Run(std::atof(argv[1]), argv[2], argv[3], argv[4]);
}
