// Who is at the other end of each connection to the bus, by the word of the bus itself.
#ifndef QORN_GATEWAY_SERVICE_CALLERS_H_
#define QORN_GATEWAY_SERVICE_CALLERS_H_

#include <sys/types.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "bus/connection.h"

namespace gateway {

struct Caller {
  std::string connection;  // its unique name, such as ":1.42"
  uid_t user = 0;
  std::string user_name;  // its number when it has no name
  std::string program;    // as the kernel calls it; "" when it is not known
  bool is_member = false;
};

using CallerPtr = std::shared_ptr<const Caller>;

// Asks the bus once for each connection, and keeps the answer until that has left. On the bus's
// thread.
class Callers {
 public:
  // Null for a connection that has left before it could be asked about.
  using Then = std::function<void(const CallerPtr& caller)>;

  // Members of this group are marked. Borrows `pending`.
  Callers(const std::string& group, bus::PendingCalls* pending);

  // Forgets connections when they leave this bus. A negative errno when it cannot watch them.
  int WatchDepartures(sd_bus* bus);

  // At once when the connection is known.
  void Identify(sd_bus* bus, const std::string& connection, Then then);

  // All connections are gone.
  void Clear();

 private:
  struct Entry {
    CallerPtr caller;
    std::vector<Then> waiting;
  };

  static int OnDeparture(sd_bus_message* message, void* callers, sd_bus_error* error);
  bool Ask(sd_bus* bus, const std::string& connection);
  void OnCredentials(const std::string& connection, sd_bus_message* reply);
  CallerPtr ReadCaller(const std::string& connection, sd_bus_message* reply) const;
  // Answers those who wait; forgets the connection when it is not known.
  void Settle(const std::string& connection, const CallerPtr& caller);

  const std::optional<gid_t> group_;
  bus::PendingCalls* const pending_;
  std::map<std::string, Entry, std::less<>> entries_;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_SERVICE_CALLERS_H_
