// Runs many gateways with real components and real clocks, each in a process of its own:
// real_gateways LIBRARY PORTAL-URL SECONDS SPREAD. A line of the input has the second at which a
// gateway starts. All are on one clock, whose beginning is printed first, as seconds of the
// monotonic clock. Then there is a line for each gateway in the order of the input: the second at
// which its component ran, the second at which its network setting was complete, or -1 if it was
// not within SECONDS, and how often it tried.
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "base/logging.h"
#include "gateway/host/host.h"

namespace {

using SteadyClock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr Seconds kPoll(0.05);

struct Fleet {
  std::string folder;
  std::string library;
  std::string portal_url;
  std::string spread;
  SteadyClock::time_point begin;
  Seconds limit;
};

// What a gateway's process writes to its pipe.
struct Outcome {
  double started = 0;
  double served = -1;
  int tries = 0;
};

[[noreturn]] void Die(const std::string& message) {
  std::fprintf(stderr, "real_gateways: %s\n", message.c_str());
  std::_Exit(2);
}

Seconds Now(const Fleet& fleet) { return SteadyClock::now() - fleet.begin; }

std::string WriteConfig(const Fleet& fleet, std::size_t number) {
  const std::string folder = fleet.folder + "/" + std::to_string(number);
  std::filesystem::create_directory(folder);
  std::ofstream config(folder + "/config.xml");
  const auto add = [&config](const std::string& key, const std::string& value) {
    config << "<" << key << ">" << value << "</" << key << ">\n";
  };
  config << "<config>\n";
  add("qorn_storage_path", folder + "/");
  add("account_db_path", "account.db");
  for (const char* key :
       {"OAuth_AsClient_app_name", "OAuth_AsClient_app_id", "OAuth_AsClient_app_secret",
        "account_device_type_code", "account_device_model_id", "account_service",
        "account_server_type", "account_qor_device_name"}) {
    add(key, "x");
  }
  add("account_device_physical_address_text", "GATEWAY-" + std::to_string(number));
  add("account_zep_auth_url", fleet.portal_url);
  add("account_user_portal_url", fleet.portal_url);
  add("account_enable_MIRLO_network_setting", "on");
  add("gateway_start_spread_seconds", fleet.spread);
  config << "</config>\n";
  return folder + "/config.xml";
}

// Each failed try is one line of the component's log.
Outcome RunGateway(const Fleet& fleet, const std::string& config, Seconds start) {
  std::atomic<int> failures{0};
  logging::SetMinLogLevel(logging::LOG_ERROR);
  logging::SetLogMessageHandler(
      [&failures](int, const char*, int, size_t, const std::string& text) {
        if (text.find("#InitNetworkSetting#") != std::string::npos) ++failures;
        return true;
      });
  std::this_thread::sleep_until(fleet.begin +
                                std::chrono::duration_cast<SteadyClock::duration>(start));
  std::string error;
  const auto wait = [](std::chrono::seconds delay) {
    std::this_thread::sleep_for(delay);
    return true;
  };
  const auto host = gateway::Host::Start(config, {fleet.library}, &error, wait);
  if (host == nullptr) Die(error);
  const double started = Now(fleet).count();
  while (host->accounts()->GetNetworkSettingStatus() != 1 && Now(fleet) < fleet.limit) {
    std::this_thread::sleep_for(kPoll);
  }
  const double ended = Now(fleet).count();
  if (host->accounts()->GetNetworkSettingStatus() != 1) {
    return {.started = started, .served = -1, .tries = failures};
  }
  return {.started = started, .served = ended, .tries = failures + 1};
}

// Returns the end of a pipe from which the outcome can be read.
int StartGateway(const Fleet& fleet, std::size_t number, double start) {
  int ends[2];
  const std::string config = WriteConfig(fleet, number);
  if (pipe(ends) != 0) Die("out of descriptors");
  const pid_t process = fork();
  if (process < 0) Die("out of processes");
  if (process > 0) {
    close(ends[1]);
    return ends[0];
  }
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const Outcome outcome = RunGateway(fleet, config, Seconds(start));
  const bool written = write(ends[1], &outcome, sizeof(outcome)) == sizeof(outcome);
  // Without an orderly end, which would wait for a request that is never answered.
  std::_Exit(written ? 0 : 2);
}

std::vector<double> ReadStarts() {
  std::vector<double> starts;
  for (double start = 0; std::cin >> start;) starts.push_back(start);
  return starts;
}

void Run(const Fleet& fleet, const std::vector<double>& starts) {
  std::vector<int> ends;
  for (std::size_t i = 0; i < starts.size(); ++i) ends.push_back(StartGateway(fleet, i, starts[i]));
  std::printf("%.3f\n", Seconds(fleet.begin.time_since_epoch()).count());
  std::fflush(stdout);
  for (const int end : ends) {
    Outcome outcome;
    if (read(end, &outcome, sizeof(outcome)) != sizeof(outcome)) Die("a gateway died");
    std::printf("%.3f %.3f %d\n", outcome.started, outcome.served, outcome.tries);
  }
  while (wait(nullptr) > 0) {
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) Die("real_gateways LIBRARY PORTAL-URL SECONDS SPREAD");
  const std::vector<double> starts = ReadStarts();
  std::string folder = std::filesystem::temp_directory_path() / "qorn-fleet-XXXXXX";
  if (mkdtemp(folder.data()) == nullptr) Die("cannot make a folder");
  // Time enough to start all processes.
  const auto begin =
      SteadyClock::now() + std::chrono::seconds(2) + std::chrono::milliseconds(10 * starts.size());
  Run({.folder = folder,
       .library = argv[1],
       .portal_url = argv[2],
       .spread = argv[4],
       .begin = begin,
       .limit = Seconds(std::strtod(argv[3], nullptr))},
      starts);
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
  return 0;
}
