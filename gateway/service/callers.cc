#include "gateway/service/callers.h"

#include <grp.h>
#include <pwd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fstream>
#include <utility>

namespace gateway {
namespace {

constexpr char kBusName[] = "org.freedesktop.DBus";
constexpr char kBusObject[] = "/org/freedesktop/DBus";
constexpr std::chrono::seconds kPatience{10};
constexpr size_t kLookUpBytes = size_t{64} * 1024;

std::optional<gid_t> FindGroup(const std::string& name) {
  group entry{};
  group* found = nullptr;
  std::vector<char> buffer(kLookUpBytes);
  // A group may have any number of members.
  while (getgrnam_r(name.c_str(), &entry, buffer.data(), buffer.size(), &found) == ERANGE) {
    buffer.resize(2 * buffer.size());
  }
  return found == nullptr ? std::nullopt : std::optional(entry.gr_gid);
}

struct Account {
  std::string name;
  gid_t group = 0;
  bool found = false;
};

Account FindAccount(uid_t user) {
  passwd entry{};
  passwd* found = nullptr;
  std::vector<char> buffer(kLookUpBytes);
  getpwuid_r(user, &entry, buffer.data(), buffer.size(), &found);
  if (found == nullptr) return {.name = std::to_string(user)};
  return {.name = entry.pw_name, .group = entry.pw_gid, .found = true};
}

// For a bus that does not tell a connection's groups.
std::vector<gid_t> GroupsOf(const Account& account) {
  if (!account.found) return {};
  int count = 0;
  getgrouplist(account.name.c_str(), account.group, nullptr, &count);
  std::vector<gid_t> groups(static_cast<size_t>(std::max(count, 0)));
  if (getgrouplist(account.name.c_str(), account.group, groups.data(), &count) < 0) return {};
  return groups;
}

std::string ProgramOf(uint32_t process) {
  std::string name;
  std::getline(std::ifstream("/proc/" + std::to_string(process) + "/comm"), name);
  return name;
}

struct Credentials {
  std::optional<uint32_t> user, process;
  std::optional<std::vector<gid_t>> groups;
};

int ReadCredential(sd_bus_message* reply, Credentials* credentials) {
  const char* key = nullptr;
  const char* type = nullptr;
  int result = sd_bus_message_read(reply, "s", &key);
  if (result >= 0) result = sd_bus_message_peek_type(reply, nullptr, &type);
  if (result < 0) return result;
  uint32_t number = 0;
  if (std::strcmp(key, "UnixGroupIDs") == 0 && std::strcmp(type, "au") == 0) {
    const void* groups = nullptr;
    size_t bytes = 0;
    result = sd_bus_message_enter_container(reply, 'v', "au");
    if (result >= 0) result = sd_bus_message_read_array(reply, 'u', &groups, &bytes);
    if (result < 0) return result;
    const auto* const first = static_cast<const gid_t*>(groups);
    credentials->groups.emplace(first, first + bytes / sizeof(gid_t));
    return sd_bus_message_exit_container(reply);
  }
  if (std::strcmp(type, "u") != 0) return sd_bus_message_skip(reply, "v");
  result = sd_bus_message_read(reply, "v", "u", &number);
  if (std::strcmp(key, "UnixUserID") == 0) credentials->user = number;
  if (std::strcmp(key, "ProcessID") == 0) credentials->process = number;
  return result;
}

// Without a user when the reply is an error or cannot be read.
Credentials ReadCredentials(sd_bus_message* reply) {
  Credentials credentials;
  if (reply == nullptr) return {};
  if (sd_bus_message_is_method_error(reply, nullptr) != 0) return {};
  int result = sd_bus_message_enter_container(reply, 'a', "{sv}");
  while (result >= 0 && (result = sd_bus_message_enter_container(reply, 'e', "sv")) > 0) {
    result = ReadCredential(reply, &credentials);
    if (result >= 0) result = sd_bus_message_exit_container(reply);
  }
  return result < 0 ? Credentials() : credentials;
}

}  // namespace

Callers::Callers(const std::string& group, bus::PendingCalls* pending)
    : group_(FindGroup(group)), pending_(pending) {}

int Callers::WatchDepartures(sd_bus* bus) {
  // One rule for all connections: a bus allows each of its clients only some hundreds.
  return sd_bus_add_match(bus, nullptr,
                          "type='signal',sender='org.freedesktop.DBus',"
                          "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg2=''",
                          &OnDeparture, this);
}

void Callers::Identify(sd_bus* bus, const std::string& connection, Then then) {
  const auto [found, is_new] = entries_.try_emplace(connection);
  Entry& entry = found->second;
  if (entry.caller != nullptr) return then(entry.caller);
  entry.waiting.push_back(std::move(then));
  if (is_new && !Ask(bus, connection)) Settle(connection, nullptr);
}

bool Callers::Ask(sd_bus* bus, const std::string& connection) {
  sd_bus_message* call = nullptr;
  int result = sd_bus_message_new_method_call(bus, &call, kBusName, kBusObject, kBusName,
                                              "GetConnectionCredentials");
  const bus::MessagePtr owner(call);
  if (result >= 0) result = sd_bus_message_append(call, "s", connection.c_str());
  if (result < 0) return false;
  return pending_->Send(bus, call, kPatience, [this, connection](sd_bus_message* reply) {
    OnCredentials(connection, reply);
  }) >= 0;
}

int Callers::OnDeparture(sd_bus_message* message, void* callers, sd_bus_error* /*error*/) {
  Callers& self = *static_cast<Callers*>(callers);
  const char* name = nullptr;
  if (sd_bus_message_read(message, "s", &name) > 0 && self.entries_.contains(name)) {
    self.Settle(name, nullptr);
  }
  return 0;
}

void Callers::OnCredentials(const std::string& connection, sd_bus_message* reply) {
  if (entries_.contains(connection)) Settle(connection, ReadCaller(connection, reply));
}

CallerPtr Callers::ReadCaller(const std::string& connection, sd_bus_message* reply) const {
  const Credentials credentials = ReadCredentials(reply);
  if (!credentials.user) return nullptr;
  const Account account = FindAccount(*credentials.user);
  auto caller = std::make_shared<Caller>();
  caller->connection = connection;
  caller->user = *credentials.user;
  caller->user_name = account.name;
  if (credentials.process) caller->program = ProgramOf(*credentials.process);
  if (group_) {
    const auto groups = credentials.groups ? *credentials.groups : GroupsOf(account);
    caller->is_member = std::find(groups.begin(), groups.end(), *group_) != groups.end();
  }
  return caller;
}

void Callers::Settle(const std::string& connection, const CallerPtr& caller) {
  const auto found = entries_.find(connection);
  const std::vector<Then> waiting = std::exchange(found->second.waiting, {});
  found->second.caller = caller;
  if (caller == nullptr) entries_.erase(found);
  for (const Then& then : waiting) then(caller);
}

void Callers::Clear() {
  auto entries = std::exchange(entries_, {});
  for (const auto& [connection, entry] : entries) {
    for (const Then& then : entry.waiting) then(nullptr);
  }
}

}  // namespace gateway
