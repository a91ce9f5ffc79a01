#include "bus/connection.h"

#include <cstring>
#include <memory>
#include <utility>

namespace bus {
namespace {

using Then = std::function<void(sd_bus_message*)>;

int OpenAddress(const std::string& address, sd_bus** connection) {
  if (address == "system") return sd_bus_open_system(connection);
  if (address == "session") return sd_bus_open_user(connection);
  int result = sd_bus_new(connection);
  if (result >= 0) result = sd_bus_set_address(*connection, address.c_str());
  if (result >= 0) result = sd_bus_set_bus_client(*connection, 1);
  return result >= 0 ? sd_bus_start(*connection) : result;
}

int OnReply(sd_bus_message* reply, void* then, sd_bus_error* /*error*/) {
  (*static_cast<Then*>(then))(reply);
  return 0;
}

void DeleteThen(void* then) { delete static_cast<Then*>(then); }

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
  int result = OpenAddress(address, &opened);
  ConnectionPtr connection(opened);
  const char* name = nullptr;
  // Waits until the bus has given this connection a name.
  if (result >= 0) result = sd_bus_get_unique_name(opened, &name);
  if (result >= 0) return connection;
  *error = "the bus " + address + " cannot be reached: " + std::strerror(-result);
  return nullptr;
}

int CallAsync(sd_bus* connection, sd_bus_message* call, std::chrono::microseconds timeout,
              Then then) {
  auto context = std::make_unique<Then>(std::move(then));
  sd_bus_slot* slot = nullptr;
  const int result = sd_bus_call_async(connection, &slot, call, &OnReply, context.get(),
                                       static_cast<uint64_t>(timeout.count()));
  if (result < 0) return result;
  sd_bus_slot_set_destroy_callback(slot, &DeleteThen);
  static_cast<void>(context.release());
  // From here on the connection owns the slot.
  sd_bus_slot_set_floating(slot, 1);
  sd_bus_slot_unref(slot);
  return result;
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
