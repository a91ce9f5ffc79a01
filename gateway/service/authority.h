// Decides what a caller may do.
#ifndef QORN_GATEWAY_SERVICE_AUTHORITY_H_
#define QORN_GATEWAY_SERVICE_AUTHORITY_H_

#include <systemd/sd-bus.h>

#include <functional>

#include "gateway/operations/rights.h"
#include "gateway/service/callers.h"

namespace gateway {

// `then` is told whether the caller has the right: at once for root, for the user whom this process
// runs as, who could read the database, and for a group member's looks and sign-ins. For all others
// polkit is asked, which may ask the person when `interactive`; without polkit they have no right.
void Authorise(sd_bus* bus, bus::PendingCalls* pending, const Caller& caller, Right right,
               bool interactive, std::function<void(bool)> then);

}  // namespace gateway

#endif  // QORN_GATEWAY_SERVICE_AUTHORITY_H_
