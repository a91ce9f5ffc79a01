#include "gateway/maintenance/running_gateway.h"

#include <cstdint>

#include "bus/connection.h"
#include "bus/names.h"

namespace gateway {
namespace {

constexpr uint64_t kTimeoutMicroseconds = 5'000'000;

// An array of texts in a variant: how many they are, since users' IDs are in it.
std::string CountTexts(sd_bus_message* message) {
  size_t count = 0;
  sd_bus_message_enter_container(message, 'v', "as");
  sd_bus_message_enter_container(message, 'a', "s");
  while (sd_bus_message_skip(message, "s") > 0) ++count;
  sd_bus_message_exit_container(message);
  sd_bus_message_exit_container(message);
  return std::to_string(count);
}

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
  } else if (signature == "as") {
    value = CountTexts(message);
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
  sd_bus_message* question = nullptr;
  const std::string interface = std::string(bus::kInterfacePrefix) + "Gateway";
  int result =
      sd_bus_message_new_method_call(connection.get(), &question, bus::kService, bus::kObject,
                                     "org.freedesktop.DBus.Properties", "GetAll");
  const bus::MessagePtr owner(question);
  // A report must not start the gateway whose state it tells.
  if (result >= 0) result = sd_bus_message_set_auto_start(question, 0);
  if (result >= 0) result = sd_bus_message_append(question, "s", interface.c_str());
  sd_bus_error failure{};
  sd_bus_message* answer = nullptr;
  if (result >= 0) result = sd_bus_call(connection.get(), question, 0, &failure, &answer);
  if (result < 0) {
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
