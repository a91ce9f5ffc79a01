#include "gateway/doctor/refresh.h"

#include <algorithm>
#include <chrono>
#include <memory>

#include "gateway/host/host.h"
#include "gateway/process/proxies.h"
#include "gateway/process/quiet_log.h"
#include "gateway/process/signals.h"

namespace gateway {
namespace {

Finding Untried(Severity state, const std::string& why) {
  return {"users.refresh", std::nullopt, why, state};
}

bool CanRefresh(const StoredUser& user) { return user.has_refresh_token && !user.id.empty(); }

Finding Refresh(const Host& host, const StoredUser& user) {
  Finding finding{"users.refresh", user.id, "the account server gave new tokens"};
  if (host.accounts()->RefreshAccessToken(user.id) != kAccountSuccess) {
    finding.MarkBad("the account server gave no new tokens: sign in again with a new code");
  }
  return finding;
}

Findings RefreshAll(const DoctorOptions& options, const Stored& stored) {
  ForgetProxies();
  // A signal must not end the process after the cloud issued tokens and before they are stored.
  const StopSignals signals([] {}, [] {});
  const QuietLog quiet;
  std::string error;
  const std::unique_ptr<Host> host = Host::Start(options.config_file, options.components, &error);
  if (host == nullptr) return {Untried(Severity::kBad, "not tried: " + error)};
  Findings findings;
  for (const StoredUser& user : stored.users) {
    if (signals.WaitForStop(std::chrono::milliseconds(0))) {
      findings.push_back(Untried(Severity::kBad, "the rest was not tried: told to stop"));
      break;
    }
    if (CanRefresh(user)) findings.push_back(Refresh(*host, user));
  }
  return findings;
}

}  // namespace

Findings ExamineRefresh(const DoctorOptions& options, const Stored& stored,
                        const std::string& obstacle) {
  const bool any = std::any_of(stored.users.begin(), stored.users.end(), CanRefresh);
  if (options.try_refresh && !obstacle.empty()) {
    return {Untried(Severity::kBad, "not tried: " + obstacle)};
  }
  if (!any) return {};
  if (options.try_refresh) return RefreshAll(options, stored);
  return {Untried(Severity::kGood,
                  "whether the cloud refreshes their tokens was not tried, since that spends them: "
                  "--try-refresh does")};
}

}  // namespace gateway
