#include "gateway/maintenance/running_gateway.h"

#include <cstdint>

#include "bus/connection.h"
#include "bus/names.h"

namespace gateway {
namespace {

constexpr uint64_t kTimeoutMicroseconds = 5'000'000;

// A property of a simple type.
std::string ReadVariant(sd_bus_message* message) {
  char type = 0;
  const char* content = nullptr;
  if (sd_bus_message_peek_type(message, &type, &content) <= 0 || content == nullptr) return "";
  std::string value = "of type " + std::string(content);
  const std::string signature = content;
  const char* text = nullptr;
  int32_t number = 0;
  if (signature == "s" && sd_bus_message_read(message, "v", "s", &text) > 0) {
    value = text;
  } else if (signature == "i" && sd_bus_message_read(message, "v", "i", &number) > 0) {
    value = std::to_string(number);
  } else {
    sd_bus_message_skip(message, "v");
  }
  return value;
}

}  // namespace

std::string DescribeRunningGateway(const std::string& bus_address) {
  std::string error;
  const bus::ConnectionPtr connection = bus::Connect(bus_address, &error);
  if (connection == nullptr) return "not asked: " + error + "\n";
  sd_bus_set_method_call_timeout(connection.get(), kTimeoutMicroseconds);
  sd_bus_error failure{};
  sd_bus_message* answer = nullptr;
  const std::string interface = std::string(bus::kInterfacePrefix) + "Gateway";
  if (sd_bus_call_method(connection.get(), bus::kService, bus::kObject,
                         "org.freedesktop.DBus.Properties", "GetAll", &failure, &answer, "s",
                         interface.c_str()) < 0) {
    error = failure.message == nullptr ? "no answer" : failure.message;
    sd_bus_error_free(&failure);
    return "does not tell: " + error + "\n";
  }
  const bus::MessagePtr properties(answer);
  std::string text;
  sd_bus_message_enter_container(answer, 'a', "{sv}");
  while (sd_bus_message_enter_container(answer, 'e', "sv") > 0) {
    const char* name = "";
    sd_bus_message_read(answer, "s", &name);
    text += std::string(name) + ": " + ReadVariant(answer) + "\n";
    sd_bus_message_exit_container(answer);
  }
  return text;
}

}  // namespace gateway
