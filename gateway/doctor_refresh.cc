#include "gateway/doctor_refresh.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>

#include "base/logging.h"
#include "gateway/host.h"
#include "gateway/proxies.h"
#include "gateway/result_names.h"
#include "gateway/signals.h"

namespace gateway {
namespace {

Finding Untried(State state, const std::string& why) {
  return {"users.refresh", std::nullopt, why, state};
}

bool CanRefresh(const StoredUser& user) { return user.has_refresh_token && !user.id.empty(); }

// Keeps the component's lines off the output, and tells whether the cloud was not reached.
class QuietLog {
 public:
  QuietLog() {
    logging::SetLogMessageHandler([this, thread = std::this_thread::get_id()](
                                      int, const char*, int, size_t, const std::string& line) {
      // The component's own thread may be asking the cloud as well.
      if (thread == std::this_thread::get_id() && line.find("curl error") != std::string::npos) {
        unreachable_ = true;
      }
      return true;
    });
  }
  ~QuietLog() { logging::SetLogMessageHandler({}); }
  QuietLog(const QuietLog&) = delete;
  QuietLog& operator=(const QuietLog&) = delete;

  void Forget() { unreachable_ = false; }
  bool unreachable() const { return unreachable_; }

 private:
  bool unreachable_ = false;
};

Finding Refresh(const Host& host, const StoredUser& user, QuietLog* log) {
  Finding finding{"users.refresh", user.id, "the cloud gave new tokens"};
  log->Forget();
  const AccountResult result = host.accounts()->RefreshAccessToken(user.id);
  if (result == kAccountSuccess) return finding;
  finding.Blame(State::kBad, log->unreachable()
                                 ? "the cloud was not reached: try again when it is"
                                 : "refused: sign in again with a new code (result " +
                                       std::to_string(result) + ", " + ResultMessage(result) + ")");
  return finding;
}

Findings RefreshAll(const DoctorOptions& options, const Stored& stored) {
  ForgetProxies();
  // A signal must not fall between the cloud's new tokens and their storing.
  const StopSignals signals([] {}, [] {});
  // Outlives the host, which logs until its end.
  QuietLog log;
  std::string error;
  const std::unique_ptr<Host> host = Host::Start(options.config_file, options.components, &error);
  if (host == nullptr) return {Untried(State::kBad, "not tried: " + error)};
  Findings findings;
  for (const StoredUser& user : stored.users) {
    if (signals.WaitForStop(std::chrono::milliseconds(0))) {
      findings.push_back(Untried(State::kBad, "the rest was not tried: told to stop"));
      break;
    }
    if (CanRefresh(user)) findings.push_back(Refresh(*host, user, &log));
  }
  return findings;
}

}  // namespace

Findings ExamineRefresh(const DoctorOptions& options, const Stored& stored, bool sound) {
  const auto users = std::count_if(stored.users.begin(), stored.users.end(), CanRefresh);
  if (users == 0) return {};
  if (!options.try_refresh) {
    return {Untried(State::kGood,
                    "whether the cloud refreshes their tokens was not tried, since that spends "
                    "them: --try-refresh does")};
  }
  if (!sound) {
    return {Untried(State::kBad,
                    "not tried: the database has to be in order first, or the new tokens are "
                    "lost")};
  }
  return RefreshAll(options, stored);
}

}  // namespace gateway
