// The account service for other processes, on D-Bus: its name, its object, its life. Calls are
// answered on a thread of its own that alone touches the connection.
#ifndef QORN_GATEWAY_SERVICE_BUS_SERVICE_H_
#define QORN_GATEWAY_SERVICE_BUS_SERVICE_H_

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core_fw/account/include/account_manager.h"
#include "gateway/metrics/metrics.h"
#include "gateway/operations/audit.h"
#include "gateway/operations/events.h"
#include "gateway/operations/seen_ids.h"
#include "gateway/service/guard.h"

namespace gateway {

class BusService {
 public:
  struct Options {
    std::string address;         // "system", "session" or a D-Bus address
    std::string group = "qorn";  // whose members may look and sign in
    GuardLimits limits = {};
  };
  // Borrowed for the service's life.
  struct Parts {
    AccountManager* accounts;
    Audit* audit;
    SeenIds* seen_ids;
    std::function<void()> flush_events;  // returns once all published events were delivered
    // One line for people: the bus is gone, or back. On the service's thread.
    std::function<void(const std::string&)> report;
    // In Prometheus's text format, for Gateway.Metrics. Any thread.
    std::function<std::string()> metrics = [] { return std::string(); };
    // The UUIDs of the users that must sign in. Any thread.
    std::function<std::vector<std::string>()> sign_in_needed = [] {
      return std::vector<std::string>();
    };
    // A call was refused. On the service's thread.
    std::function<void(Refusal)> on_refusal = [](Refusal) {};
  };

  // False in a build without D-Bus, where Start fails.
  static bool IsBuilt();

  // Connects and takes the name. Null with one line in `error` when the bus cannot be reached or
  // somebody else has the name.
  static std::unique_ptr<BusService> Start(const Options& options, const Parts& parts,
                                           std::string* error);
  // Stops.
  ~BusService();
  BusService(const BusService&) = delete;
  BusService& operator=(const BusService&) = delete;

  // Refuses new calls, waits for those that run and answers them; then the accounts are not used
  // any more. From the thread that started it.
  void Stop();

  // Signals the event, until Stop has returned. Any thread.
  void NoteEvent(const SeenEvent& event);
  // The user must sign in, or need not any more: signals the former and, both times, the property.
  void NoteSignInNeeded(const std::string& user_uuid, const std::string& user_id, bool needed);

 private:
  class Impl;
  explicit BusService(std::unique_ptr<Impl> impl);

  const std::unique_ptr<Impl> impl_;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_SERVICE_BUS_SERVICE_H_
