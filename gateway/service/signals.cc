#include "gateway/service/signals.h"

#include <algorithm>
#include <string>

#include "bus/connection.h"
#include "bus/names.h"

namespace gateway {
namespace {

std::string ValueOf(const SeenEvent& event, const std::string& name) {
  const auto found = std::find_if(event.fields.begin(), event.fields.end(),
                                  [&](const Field& field) { return field.name == name; });
  return found == event.fields.end() ? "" : found->values.at(0);
}

}  // namespace

int EmitSignal(sd_bus* connection, const SeenEvent& event) {
  const EventKind* const kind = FindEventKind(event.type);
  if (kind == nullptr) return 0;
  sd_bus_message* made = nullptr;
  int result = sd_bus_message_new_signal(connection, &made, bus::kObject,
                                         (std::string(bus::kInterfacePrefix) + kind->group).c_str(),
                                         kind->signal);
  const bus::MessagePtr signal(made);
  for (const Parameter& argument : SharedPayload(*kind)) {
    if (result < 0) break;
    result =
        sd_bus_message_append_basic(made, 's', bus::ToUtf8(ValueOf(event, argument.name)).c_str());
  }
  return result < 0 ? result : sd_bus_send(connection, made, nullptr);
}

int EmitSignInNeeded(sd_bus* connection, const std::string& user_uuid, const std::string& user_id) {
  return sd_bus_emit_signal(
      connection, bus::kObject, (std::string(bus::kInterfacePrefix) + kSignInNeededGroup).c_str(),
      kSignInNeededSignal, "ss", bus::ToUtf8(user_uuid).c_str(), bus::ToUtf8(user_id).c_str());
}

}  // namespace gateway
