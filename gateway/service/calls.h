// Calls from their arrival to their reply: who calls, how much, with what right, and then the
// operation.
#ifndef QORN_GATEWAY_SERVICE_CALLS_H_
#define QORN_GATEWAY_SERVICE_CALLS_H_

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>

#include "bus/handles.h"
#include "bus/loop.h"
#include "gateway/metrics/metrics.h"
#include "gateway/operations/audit.h"
#include "gateway/service/callers.h"
#include "gateway/service/guard.h"
#include "gateway/service/methods.h"
#include "gateway/service/workers.h"

namespace gateway {

// On the loop's thread, but for what the workers run.
class Calls {
 public:
  struct Parts {
    bus::Loop* loop;
    Sources sources;
    Audit* audit;
    // Returns once all published events were delivered, so that signals stand before replies.
    std::function<void()> flush_events;
    // After each call that may have changed something.
    std::function<void(const Method& method)> on_change;
    std::function<void(Refusal)> on_refusal;
  };

  // Borrows the parts.
  Calls(Parts parts, const GuardLimits& limits, const std::string& group);
  // All calls have ended, or their connections are closed.
  ~Calls();
  Calls(const Calls&) = delete;
  Calls& operator=(const Calls&) = delete;

  // Answers the call, now or later.
  void Take(const Method& method, sd_bus_message* message);

  // Refuses new calls and those whose right is still being asked for; `then` runs once all that
  // were taken are answered.
  void Stop(std::function<void()> then);

  // A new connection is there. A negative errno when it is of no use.
  int Use(sd_bus* connection) { return callers_.WatchDepartures(connection); }
  // The connection was lost.
  void Lose();

 private:
  struct Call;
  using CallPtr = std::shared_ptr<Call>;

  void Admit(const CallPtr& call);
  void Run(const CallPtr& call);
  void RunOnWorker(Workers* workers, const CallPtr& call);
  void Finish(Call* call);
  void SendOutcome(Call* call);
  void SendError(Call* call, const char* error, const std::string& text);
  void Refuse(Call* call, Refusal refusal, const std::string& text);
  void RefuseStopping(Call* call);
  // Refuses a call over the limits, after a delay.
  void RefuseLater(const CallPtr& call, int seconds);
  void Note(const Call& call, std::optional<int> result, const std::string& message);
  void OnEnd(const Call& call);

  const Parts parts_;
  bus::PendingCalls pending_;
  Guard guard_;
  Callers callers_;
  std::unordered_map<Call*, CallPtr> running_;
  std::map<uid_t, Guard::Clock::time_point> noted_;  // when a user's latest excess was audited
  std::map<uid_t, int> held_;                        // refusals that are held back
  size_t open_ = 0;
  std::function<void()> on_all_ended_;
  // Last, so that they have ended before the rest goes.
  Workers database_{1, 1};
  Workers cloud_{8, 6};
};

}  // namespace gateway

#endif  // QORN_GATEWAY_SERVICE_CALLS_H_
