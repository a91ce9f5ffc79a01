// The object as sd-bus and introspection see it: interfaces with methods, signals and properties.
#ifndef QORN_GATEWAY_SERVICE_TABLES_H_
#define QORN_GATEWAY_SERVICE_TABLES_H_

#include <systemd/sd-bus.h>

#include <string>
#include <vector>

namespace gateway {

struct Handlers {
  sd_bus_message_handler_t method;
  sd_bus_property_get_t property;
};

// Adds all interfaces to the connection; `handler_data` goes to the handlers. A negative errno when
// that fails.
int AddInterfaces(sd_bus* connection, const Handlers& handlers, void* handler_data);

}  // namespace gateway

#endif  // QORN_GATEWAY_SERVICE_TABLES_H_
