#ifndef QORN_DEVCLOUD_CONTROL_CONTROL_CONTEXT_H_
#define QORN_DEVCLOUD_CONTROL_CONTROL_CONTEXT_H_

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "devcloud/control/request_log.h"
#include "devcloud/faults/fault_list.h"
#include "devcloud/services/accounts.h"
#include "devcloud/services/clock.h"
#include "devcloud/services/devices.h"

namespace devcloud {

struct Urls {
  std::string http, https, api;
};

// What the page and the API show and change.
struct ControlContext {
  const Urls& urls;
  Accounts& accounts;
  const Devices& devices;
  RequestLog& log;
  FaultList& faults;
  Clock& clock;
  const std::atomic<bool>& is_refusing;
  // Ends the fault of this number and lets the requests that it stalls go on; false when no such
  // fault is left.
  std::function<bool(std::uint64_t)> end_fault;
  std::function<void()> clear_faults;
  std::function<void(bool)> refuse_connections;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_CONTROL_CONTROL_CONTEXT_H_
