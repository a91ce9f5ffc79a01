// The account component's events as signals on the bus.
#ifndef QORN_GATEWAY_SERVICE_SIGNALS_H_
#define QORN_GATEWAY_SERVICE_SIGNALS_H_

#include <systemd/sd-bus.h>

#include <string>

#include "gateway/operations/events.h"

namespace gateway {

// Signals what others may know of the event; what a payload that was cut short lacks is "". A
// negative errno when the signal cannot be sent.
int EmitSignal(sd_bus* connection, const SeenEvent& event);

// The one signal that is no event: the gateway itself finds that a user must sign in.
inline constexpr char kSignInNeededGroup[] = "Users";
inline constexpr char kSignInNeededSignal[] = "SignInNeeded";
int EmitSignInNeeded(sd_bus* connection, const std::string& user_uuid, const std::string& user_id);

}  // namespace gateway

#endif  // QORN_GATEWAY_SERVICE_SIGNALS_H_
