// The configuration's keys for the service on the bus. None has to be there.
#ifndef QORN_GATEWAY_SERVICE_BUS_KEYS_H_
#define QORN_GATEWAY_SERVICE_BUS_KEYS_H_

#include <functional>
#include <string>

#include "gateway/service/bus_service.h"

namespace gateway {

inline constexpr char kBusGroupKey[] = "gateway_bus_group";

// A number that limits each user's calls.
struct BusLimitKey {
  const char* name;
  const char* meaning;
  int GuardLimits::*limit;
};

inline constexpr BusLimitKey kBusLimitKeys[] = {
    {"gateway_bus_calls_per_second", "how many calls a second each user may make on the bus",
     &GuardLimits::calls_per_second},
    {"gateway_bus_call_burst", "how many calls each user may make at once after a pause",
     &GuardLimits::burst},
    {"gateway_bus_calls_in_flight", "how many calls of each user may run at the same time",
     &GuardLimits::calls_in_flight},
    {"gateway_bus_all_calls_in_flight", "how many calls of all users may run at the same time",
     &GuardLimits::all_calls_in_flight},
    {"gateway_bus_sign_ins_per_minute", "how many sign-ins a minute each user may try on the bus",
     &GuardLimits::sign_ins_per_minute},
};

// Reads a limit: a whole number from 1 to 1,000,000.
bool ParseBusLimit(const std::string& text, int* limit);

// Fills group and limits. `option` gives a key's value, "" for one that is absent. False with one
// line in `error` when a value is no limit.
bool ReadBusKeys(const std::function<std::string(const std::string& key)>& option,
                 BusService::Options* options, std::string* error);

}  // namespace gateway

#endif  // QORN_GATEWAY_SERVICE_BUS_KEYS_H_
