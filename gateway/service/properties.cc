#include "gateway/service/properties.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "bus/names.h"

namespace gateway {
namespace {

constexpr char kStandardInterface[] = "org.freedesktop.DBus.Properties";
constexpr char kVersion[] = "Version";
constexpr char kNetworkSettingStatus[] = "NetworkSettingStatus";
constexpr char kSessionLifetime[] = "SessionLifetime";
constexpr char kOpenSessions[] = "OpenSessions";
constexpr char kSignInNeeded[] = "SignInNeeded";
constexpr char kGroup[] = "Gateway";

std::string InterfaceName() { return std::string(bus::kInterfacePrefix) + kGroup; }

// Null when there is no such property.
const Property* Find(const std::string& name) {
  const auto& all = Properties::All();
  const auto found = std::find_if(all.begin(), all.end(),
                                  [&](const Property& property) { return property.name == name; });
  return found == all.end() ? nullptr : &*found;
}

int LifetimeOf(AccountManager& accounts) {
  int lifetime = 0;
  accounts.GetSessionLifetime(&lifetime);
  return lifetime;
}

void Announce(sd_bus* connection, const char* name) {
  sd_bus_emit_properties_changed(connection, bus::kObject, InterfaceName().c_str(), name, nullptr);
}

int AppendVariant(sd_bus_message* reply, const Field& value) {
  int result = sd_bus_message_open_container(reply, 'v', Find(value.name)->signature);
  if (result >= 0) result = AppendOutput(reply, value);
  return result >= 0 ? sd_bus_message_close_container(reply) : result;
}

int AppendFirst(const Outcome& outcome, sd_bus_message* reply) {
  return AppendVariant(reply, outcome.outputs.at(0));
}

int AppendDictionary(const Outcome& outcome, sd_bus_message* reply) {
  int result = sd_bus_message_open_container(reply, 'a', "{sv}");
  for (size_t i = 0; i < outcome.outputs.size() && result >= 0; ++i) {
    result = sd_bus_message_open_container(reply, 'e', "sv");
    if (result >= 0) {
      result = sd_bus_message_append_basic(reply, 's', outcome.outputs[i].name.c_str());
    }
    if (result >= 0) result = AppendVariant(reply, outcome.outputs[i]);
    if (result >= 0) result = sd_bus_message_close_container(reply);
  }
  return result >= 0 ? sd_bus_message_close_container(reply) : result;
}

}  // namespace

const std::vector<Property>& Properties::All() {
  static const std::vector<Property> all = {{kVersion, kGroup, "s", true},
                                            {kNetworkSettingStatus, kGroup, "i", true},
                                            {kSessionLifetime, kGroup, "i", true},
                                            {kOpenSessions, kGroup, "i", false},
                                            {kSignInNeeded, kGroup, "as", true}};
  return all;
}

Properties::Properties(AccountManager* accounts, SeenIds* seen_ids,
                       std::function<std::vector<std::string>()> sign_in_needed)
    : accounts_(accounts),
      seen_ids_(seen_ids),
      sign_in_needed_(std::move(sign_in_needed)),
      get_{.name = "Get",
           .group = "Properties",
           .takes = {{"interface_name", "s"}, {"property_name", "s"}},
           .gives = {{"value", "v"}},
           .right = Right::kLook,
           .backend = Backend::kMemory,
           .run = [this](const Sources&,
                         const Words& words) { return Outcome{.outputs = {Read(words.at(1))}}; },
           .append = &AppendFirst},
      get_all_{.name = "GetAll",
               .group = "Properties",
               .takes = {{"interface_name", "s"}},
               .gives = {{"properties", "a{sv}"}},
               .right = Right::kLook,
               .backend = Backend::kMemory,
               .run =
                   [this](const Sources&, const Words&) {
                     Outcome outcome;
                     for (const Property& property : All()) {
                       outcome.outputs.push_back(Read(property.name));
                     }
                     return outcome;
                   },
               .append = &AppendDictionary},
      network_status_(accounts->GetNetworkSettingStatus()),
      lifetime_(LifetimeOf(*accounts)) {}

Field Properties::Read(const std::string& name) const {
  if (name == kVersion) return {.name = name, .values = {QORN_VERSION}};
  if (name == kNetworkSettingStatus) {
    return NumberField(name, accounts_->GetNetworkSettingStatus());
  }
  if (name == kSignInNeeded) return ListField(name, sign_in_needed_());
  if (name == kSessionLifetime) return NumberField(name, LifetimeOf(*accounts_));
  return NumberField(name, static_cast<int>(CountOpenSessions(*accounts_, *seen_ids_)));
}

int Properties::Append(const std::string& name, sd_bus_message* reply) const {
  return AppendOutput(reply, Read(name));
}

const Method* Properties::FindReader(sd_bus_message* call) const {
  const char* interface = nullptr;
  const char* name = "";
  const Method* method = nullptr;
  if (sd_bus_message_is_method_call(call, kStandardInterface, "GetAll") > 0 &&
      sd_bus_message_read(call, "s", &interface) > 0) {
    method = &get_all_;
  } else if (sd_bus_message_is_method_call(call, kStandardInterface, "Get") > 0 &&
             sd_bus_message_read(call, "ss", &interface, &name) > 0 && Find(name) != nullptr) {
    method = &get_;
  }
  // "" stands for any interface.
  const bool is_own = method != nullptr && (*interface == '\0' || interface == InterfaceName());
  sd_bus_message_rewind(call, 1);
  return is_own ? method : nullptr;
}

void Properties::AnnounceLifetime(sd_bus* connection) {
  const int lifetime = LifetimeOf(*accounts_);
  if (std::exchange(lifetime_, lifetime) != lifetime) Announce(connection, kSessionLifetime);
}

void Properties::AnnounceSignInNeeded(sd_bus* connection) { Announce(connection, kSignInNeeded); }

void Properties::AnnounceNetworkStatus(sd_bus* connection) {
  const int status = accounts_->GetNetworkSettingStatus();
  if (std::exchange(network_status_, status) != status) {
    Announce(connection, kNetworkSettingStatus);
  }
}

}  // namespace gateway
