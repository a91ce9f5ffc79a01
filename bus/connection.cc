#include "bus/connection.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

namespace bus {
namespace {

// Connecting asks the bus a few things, and must not take for ever.
constexpr std::chrono::microseconds kPatience = std::chrono::seconds(5);

std::string EnvironmentOr(const char* name, const std::string& usual) {
  const char* const value = std::getenv(name);
  return value == nullptr || *value == '\0' ? usual : value;
}

std::string ExpandAddress(const std::string& address) {
  if (address == "system") {
    return EnvironmentOr("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/run/dbus/system_bus_socket");
  }
  if (address != "session") return address;
  return EnvironmentOr("DBUS_SESSION_BUS_ADDRESS",
                       "unix:path=" + EnvironmentOr("XDG_RUNTIME_DIR", "/run") + "/bus");
}

int Open(const std::string& address, sd_bus** connection) {
  int result = sd_bus_new(connection);
  if (result >= 0) result = sd_bus_set_address(*connection, ExpandAddress(address).c_str());
  if (result >= 0) result = sd_bus_set_bus_client(*connection, 1);
  // Nothing here takes descriptors, and those of others' messages would pile up.
  if (result >= 0) result = sd_bus_negotiate_fds(*connection, 0);
  if (result >= 0) {
    result = sd_bus_set_method_call_timeout(*connection, static_cast<uint64_t>(kPatience.count()));
  }
  return result >= 0 ? sd_bus_start(*connection) : result;
}

// How many bytes the character at `at` has; 0 when there is none. RFC 3629, section 4.
std::size_t CharacterBytes(const std::string& text, std::size_t at) {
  const auto byte = [&](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u;
  };
  const unsigned first = byte(at);
  const unsigned second = byte(at + 1);
  if (first < 0x80) return first == 0 ? 0 : 1;
  const std::size_t size = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (first < 0xc2 || first > 0xf4) return 0;
  // No longer forms, surrogates or numbers beyond Unicode's.
  if ((first == 0xe0 && second < 0xa0) || (first == 0xed && second > 0x9f) ||
      (first == 0xf0 && second < 0x90) || (first == 0xf4 && second > 0x8f)) {
    return 0;
  }
  for (std::size_t i = 1; i < size; ++i) {
    if ((byte(at + i) & 0xc0) != 0x80) return 0;
  }
  return size;
}

}  // namespace

ConnectionPtr Connect(const std::string& address, std::string* error) {
  sd_bus* opened = nullptr;
  int result = Open(address, &opened);
  ConnectionPtr connection(opened);
  const char* name = nullptr;
  // Waits until the bus has given this connection a name.
  if (result >= 0) result = sd_bus_get_unique_name(opened, &name);
  if (result >= 0) return connection;
  *error = "the bus " + address + " cannot be reached: " + std::strerror(-result);
  return nullptr;
}

int PendingCalls::Send(sd_bus* connection, sd_bus_message* call, std::chrono::microseconds timeout,
                       Then then) {
  auto place = std::make_unique<Place>(Place{this, next_++});
  sd_bus_slot* slot = nullptr;
  const int result = sd_bus_call_async(connection, &slot, call, &OnReply, place.get(),
                                       static_cast<uint64_t>(timeout.count()));
  if (result < 0) return result;
  waiting_.emplace(place->number, std::move(then));
  sd_bus_slot_set_destroy_callback(slot, [](void* old) { delete static_cast<Place*>(old); });
  static_cast<void>(place.release());
  // From here on the connection owns the slot.
  sd_bus_slot_set_floating(slot, 1);
  sd_bus_slot_unref(slot);
  return result;
}

int PendingCalls::OnReply(sd_bus_message* reply, void* place, sd_bus_error* /*error*/) {
  const Place& at = *static_cast<Place*>(place);
  const auto found = at.calls->waiting_.find(at.number);
  if (found == at.calls->waiting_.end()) return 0;
  const Then then = std::move(found->second);
  at.calls->waiting_.erase(found);
  then(reply);
  return 0;
}

void PendingCalls::Fail() {
  const auto waiting = std::exchange(waiting_, {});
  for (const auto& [number, then] : waiting) then(nullptr);
}

std::string ToUtf8(const std::string& text) {
  std::string good;
  good.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t size = CharacterBytes(text, at);
    if (size == 0) {
      good += "\xef\xbf\xbd";
      ++at;
    } else {
      good.append(text, at, size);
      at += size;
    }
  }
  return good;
}

}  // namespace bus
