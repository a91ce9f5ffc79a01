// The gateway's state at a glance.
#ifndef QORN_GATEWAY_CONSOLE_STATUS_H_
#define QORN_GATEWAY_CONSOLE_STATUS_H_

#include "gateway/console/services.h"
#include "gateway/operations/seen_ids.h"
#include "gateway/output/printer.h"

namespace gateway {

// Sessions that have ended without an event, as after a factory reset, are forgotten first.
void ShowStatus(const ConsoleServices& services, SeenIds* seen_ids, Printer* printer);

}  // namespace gateway

#endif  // QORN_GATEWAY_CONSOLE_STATUS_H_
