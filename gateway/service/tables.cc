#include "gateway/service/tables.h"

#include <deque>
#include <memory>

#include "bus/names.h"
#include "gateway/operations/events.h"
#include "gateway/service/methods.h"
#include "gateway/service/properties.h"
#include "gateway/service/signals.h"

namespace gateway {
namespace {

// sd-bus keeps pointers into the tables while the connection lives.
class Tables {
 public:
  explicit Tables(const Handlers& handlers);

  const std::vector<sd_bus_vtable>& Of(const std::string& group) const;
  static const std::vector<std::string>& Groups();

 private:
  std::vector<sd_bus_vtable> Make(const std::string& group, const Handlers& handlers);
  const char* Keep(const std::string& text) { return texts_.emplace_back(text).c_str(); }

  std::deque<std::string> texts_;
  std::vector<std::vector<sd_bus_vtable>> tables_;
};

// Names one after another, each with a zero byte.
std::string JoinNames(const std::vector<Method::Value>& values) {
  std::string names;
  for (const Method::Value& value : values) names += value.name + '\0';
  return names;
}

std::string JoinSignatures(const std::vector<Method::Value>& values) {
  std::string signatures;
  for (const Method::Value& value : values) signatures += value.signature;
  return signatures;
}

const std::vector<std::string>& Tables::Groups() {
  static const std::vector<std::string> groups = {"Users", "Sessions", "Friends", "Gateway"};
  return groups;
}

Tables::Tables(const Handlers& handlers) {
  for (const std::string& group : Groups()) tables_.push_back(Make(group, handlers));
}

const std::vector<sd_bus_vtable>& Tables::Of(const std::string& group) const {
  size_t i = 0;
  while (Groups()[i] != group) ++i;
  return tables_[i];
}

std::vector<sd_bus_vtable> Tables::Make(const std::string& group, const Handlers& handlers) {
  std::vector<sd_bus_vtable> table = {SD_BUS_VTABLE_START(0)};
  for (const Method& method : Methods()) {
    if (method.group != group) continue;
    // "Unprivileged" keeps sd-bus from refusing callers on its own: their rights are looked at
    // here.
    table.push_back(SD_BUS_METHOD_WITH_NAMES(
        Keep(method.name), Keep(JoinSignatures(method.takes)), , Keep(JoinSignatures(method.gives)),
        Keep(JoinNames(method.takes) + JoinNames(method.gives)), handlers.method,
        SD_BUS_VTABLE_UNPRIVILEGED));
  }
  for (const EventKind& kind : EventKinds()) {
    if (kind.group != group) continue;
    std::string names;
    size_t count = 0;
    for (const Parameter& parameter : SharedPayload(kind)) {
      names += std::string(parameter.name) + '\0';
      ++count;
    }
    table.push_back(
        SD_BUS_SIGNAL_WITH_NAMES(kind.signal, Keep(std::string(count, 's')), Keep(names), 0));
  }
  if (group == kSignInNeededGroup) {
    const std::string names =
        std::string(parameter::kUserUuid.name) + '\0' + parameter::kUserId.name + '\0';
    table.push_back(SD_BUS_SIGNAL_WITH_NAMES(kSignInNeededSignal, "ss", Keep(names), 0));
  }
  for (const Property& property : Properties::All()) {
    if (property.group != group) continue;
    const sd_bus_vtable announced =
        SD_BUS_PROPERTY(property.name, property.signature, handlers.property, 0,
                        SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE);
    const sd_bus_vtable silent =
        SD_BUS_PROPERTY(property.name, property.signature, handlers.property, 0, 0);
    table.push_back(property.announced ? announced : silent);
  }
  table.push_back(SD_BUS_VTABLE_END);
  return table;
}

}  // namespace

int AddInterfaces(sd_bus* connection, const Handlers& handlers, void* handler_data) {
  // The handlers are the same functions for every connection.
  static const Tables* const tables = new Tables(handlers);
  for (const std::string& group : Tables::Groups()) {
    const int result = sd_bus_add_object_vtable(connection, nullptr, bus::kObject,
                                                (bus::kInterfacePrefix + group).c_str(),
                                                tables->Of(group).data(), handler_data);
    if (result < 0) return result;
  }
  return 0;
}

}  // namespace gateway
