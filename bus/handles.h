// Owners of what sd-bus hands out.
#ifndef QORN_BUS_HANDLES_H_
#define QORN_BUS_HANDLES_H_

#include <systemd/sd-bus.h>

#include <memory>

namespace bus {

struct Deleter {
  void operator()(sd_bus* connection) const { sd_bus_close_unref(connection); }
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
  void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};

using ConnectionPtr = std::unique_ptr<sd_bus, Deleter>;
using MessagePtr = std::unique_ptr<sd_bus_message, Deleter>;
using SlotPtr = std::unique_ptr<sd_bus_slot, Deleter>;

// One more owner of the message.
inline MessagePtr Share(sd_bus_message* message) { return MessagePtr(sd_bus_message_ref(message)); }

}  // namespace bus

#endif  // QORN_BUS_HANDLES_H_
