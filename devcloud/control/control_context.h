#ifndef QORN_DEVCLOUD_CONTROL_CONTROL_CONTEXT_H_
#define QORN_DEVCLOUD_CONTROL_CONTROL_CONTEXT_H_

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "devcloud/control/request_log.h"
#include "devcloud/control/settings.h"
#include "devcloud/faults/fault_list.h"
#include "devcloud/services/accounts.h"
#include "devcloud/services/clock.h"
#include "devcloud/services/devices.h"

namespace devcloud {

// As Cloud's functions of these names return them.
struct Urls {
  std::string http, https, api;
};

// What the page and the API show and change. Everything is borrowed.
struct ControlContext {
  const Urls& urls;
  Accounts& accounts;
  const Devices& devices;
  RequestLog& log;
  FaultList& faults;
  Clock& clock;
  const std::atomic<bool>& is_refusing;
  // Removes the fault with this number and resumes the requests that it stalls; false if it is not
  // in the list, or no longer.
  std::function<bool(std::uint64_t)> end_fault;
  std::function<void()> clear_faults;
  std::function<void(bool)> refuse_connections;
  std::function<Settings()> settings;
  std::function<void(const Settings&)> change_settings;
  std::function<void()> reset;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_CONTROL_CONTROL_CONTEXT_H_
