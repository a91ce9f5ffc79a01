// The properties of the interface "org.qorn.Accounts1.Gateway".
#ifndef QORN_GATEWAY_SERVICE_PROPERTIES_H_
#define QORN_GATEWAY_SERVICE_PROPERTIES_H_

#include <systemd/sd-bus.h>

#include <functional>
#include <string>
#include <vector>

#include "core_fw/account/include/account_manager.h"
#include "gateway/operations/seen_ids.h"
#include "gateway/service/methods.h"

namespace gateway {

struct Property {
  const char* name;
  const char* group;  // the interface's
  const char* signature;
  bool announced;  // its changes are signalled
};

// On the bus's thread.
class Properties {
 public:
  static const std::vector<Property>& All();

  // Borrows accounts and IDs. `sign_in_needed` gives the UUIDs of the users that must sign in.
  Properties(AccountManager* accounts, SeenIds* seen_ids,
             std::function<std::vector<std::string>()> sign_in_needed);
  Properties(const Properties&) = delete;
  Properties& operator=(const Properties&) = delete;

  // Appends the value. A negative errno when that fails.
  int Append(const std::string& name, sd_bus_message* reply) const;

  // For a call of org.freedesktop.DBus.Properties that reads some of these: the method that answers
  // it. Null for all other calls. sd-bus would answer without asking who calls.
  const Method* FindReader(sd_bus_message* call) const;

  // Signal the value if it has changed since it was last looked at; nobody tells the gateway of
  // these changes, and each look is a line in the component's log.
  void AnnounceLifetime(sd_bus* connection);
  void AnnounceNetworkStatus(sd_bus* connection);
  // Signals the value, which the caller knows to have changed.
  void AnnounceSignInNeeded(sd_bus* connection);
  // The network setting was fetched; that does not change any more.
  bool network_is_set() const { return network_status_ == 1; }

 private:
  Field Read(const std::string& name) const;

  AccountManager* const accounts_;
  SeenIds* const seen_ids_;
  const std::function<std::vector<std::string>()> sign_in_needed_;
  const Method get_;
  const Method get_all_;
  int network_status_ = 0;
  int lifetime_ = 0;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_SERVICE_PROPERTIES_H_
