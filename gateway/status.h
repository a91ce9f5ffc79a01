// How the gateway stands, at a glance.
#ifndef QORN_GATEWAY_STATUS_H_
#define QORN_GATEWAY_STATUS_H_

#include "gateway/console_services.h"
#include "gateway/printer.h"
#include "gateway/sightings.h"

namespace gateway {

// Sessions that have ended without an event, as after a factory reset, are forgotten first.
void ShowStatus(const ConsoleServices& services, Sightings* sightings, Printer* printer);

}  // namespace gateway

#endif  // QORN_GATEWAY_STATUS_H_
