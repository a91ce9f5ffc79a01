// What the console needs of the program around it.
#ifndef QORN_GATEWAY_CONSOLE_SERVICES_H_
#define QORN_GATEWAY_CONSOLE_SERVICES_H_

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core_fw/account/include/account_manager.h"
#include "gateway/operations/lists.h"

namespace gateway {

// What the status shows of how the program was started. Of a gateway in another process only
// `remote` is known.
struct GatewayFacts {
  std::string remote = {};  // where it answers, and its version
  std::vector<std::string> components;
  std::string config_file;
  std::string database;  // the file's path; "" when the configuration names none
  std::string account_server;
  std::string user_portal;
  std::string network_setting;  // the configuration's value
  std::string log_file;         // "" for standard error
  std::string audit_file;       // "" for none
};

struct ConsoleServices {
  AccountManager* accounts;  // borrowed
  GatewayFacts facts = {};
  std::function<void()> flush_events;  // returns once all published events are shown
  // Fetches an authorisation code for the user; false with one line in `error`.
  std::function<bool(const std::string& user, std::string* code, std::string* error)> request_code;
  // Waits; true when the program was told to stop.
  std::function<bool(std::chrono::milliseconds)> pause;
  // Shows the log's lines until the time has passed, a person pressed Enter or the program was told
  // to stop. Without a time and a person: until it was told to stop.
  std::function<void(std::optional<std::chrono::seconds>)> watch;

  // Read all rows of a table, as in lists.h.
  std::function<AccountResult(FieldRows* users)> list_users;
  std::function<AccountResult(const std::string& user_uuid, FieldRows* friends)> list_friends;

  // What can still be written where the database lies; none when it is not known.
  struct FreeSpace {
    uint64_t bytes;
    bool is_low;
  };
  std::function<std::optional<FreeSpace>()> free_space = {};

  // The UUIDs of the users whose tokens cannot be kept fresh until they sign in.
  std::function<std::vector<std::string>()> sign_in_needed = [] {
    return std::vector<std::string>();
  };

  // What the gateway counts, in Prometheus's text format; false with one line in `error`.
  std::function<bool(std::string* text, std::string* error)> read_metrics;

  // For a gateway in another process, and not needed for one in this process.
  std::function<AccountResult(int* count)> count_sessions = {};
  // What the code of the latest operation does not tell about its failure; "" for nothing.
  std::function<std::string()> explain = {};
};

}  // namespace gateway

#endif  // QORN_GATEWAY_CONSOLE_SERVICES_H_
