#include "gateway/keeper/host_keeper.h"

#include <ctime>
#include <random>

#include "gateway/host/database_path.h"
#include "gateway/host/free_space.h"
#include "gateway/keeper/account_server.h"

namespace gateway {
namespace {

// With a full disk a refresh succeeds, and the new token is lost.
constexpr uint64_t kNeededBytes = uint64_t{1} << 20;

int64_t SecondsOf(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return time.tv_sec;
}

double Random() {
  static std::mt19937 generator(std::random_device{}());
  return std::uniform_real_distribution<double>()(generator);
}

}  // namespace

std::unique_ptr<Keeper> MakeKeeper(const Host& host, int hours, const KeeperListener& listener) {
  const std::string folder = FolderOf(host.DatabasePath());
  const std::string url = host.ConfigOption("account_zep_auth_url");
  return std::make_unique<Keeper>(
      Keeper::Options{.hours = hours,
                      .state_file = folder + "/keeper.json",
                      .device_address = host.ConfigOption("account_device_physical_address_text")},
      Keeper::Parts{
          .accounts = host.accounts(),
          .has_space = [folder] { return FreeBytes(folder).value_or(0) >= kNeededBytes; },
          .server_answers =
              [url](const std::atomic<bool>& stop) { return AccountServerAnswers(url, stop); },
          .on_refresh = listener.on_refresh,
          .on_sign_in_needed = listener.on_sign_in_needed,
          .report = listener.report,
          .random = &Random,
          .now = [] { return SecondsOf(CLOCK_BOOTTIME); },
          .wall_now = [] { return SecondsOf(CLOCK_REALTIME); }});
}

}  // namespace gateway
