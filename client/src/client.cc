#include <utility>

#include "bus/names.h"
#include "client/include/qorn_client.h"
#include "client/src/remote_accounts.h"
#include "gateway/operations/operations.h"

namespace qorn {
namespace {

constexpr char kProperties[] = "org.freedesktop.DBus.Properties";

// The outputs of the operation that a list's rows are made of, tokens left out.
std::vector<std::string> ColumnsOf(const char* operation, std::vector<std::string> columns) {
  for (const gateway::Parameter& output : gateway::FindOperation(operation)->outputs) {
    if (!output.secret) columns.emplace_back(output.name);
  }
  return columns;
}

bool ReadRows(sd_bus_message* reply, const std::vector<std::string>& columns, ClientRows* rows) {
  const std::string members(columns.size(), 's');
  if (sd_bus_message_enter_container(reply, 'a', ("(" + members + ")").c_str()) <= 0) return false;
  int result = 0;
  while ((result = sd_bus_message_enter_container(reply, 'r', members.c_str())) > 0) {
    auto& row = rows->emplace_back();
    for (const std::string& column : columns) {
      const char* text = nullptr;
      if (sd_bus_message_read_basic(reply, 's', static_cast<void*>(&text)) <= 0) return false;
      row.emplace_back(column, text);
    }
    if (sd_bus_message_exit_container(reply) < 0) return false;
  }
  return result == 0;
}

}  // namespace

class Client::Impl {
 public:
  explicit Impl(const ClientOptions& options) : remote(options), accounts(&remote) {}

  AccountResult List(const char* group, const char* method, std::vector<Argument> arguments,
                     const std::vector<std::string>& columns, ClientRows* rows) {
    return CodeOf(remote.Send(
        {.interface = std::string(bus::kInterfacePrefix) + group,
         .member = method,
         .arguments = std::move(arguments),
         .read = [&](sd_bus_message* reply) { return ReadRows(reply, columns, rows); }}));
  }

  AccountResult GetProperty(const char* name, const char* signature, const Output& value) {
    const std::string interface = std::string(bus::kInterfacePrefix) + "Gateway";
    const std::string property = name;
    return CodeOf(remote.Send({.interface = kProperties,
                               .member = "Get",
                               .arguments = {interface, property},
                               .read = [&](sd_bus_message* reply) {
                                 return sd_bus_message_enter_container(reply, 'v', signature) > 0 &&
                                        value.Read(reply);
                               }}));
  }

  Remote remote;
  RemoteAccounts accounts;
};

Client::Client(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
Client::~Client() = default;

std::unique_ptr<Client> Client::Connect(const ClientOptions& options, std::string* error) {
  auto impl = std::make_unique<Impl>(options);
  if (!impl->remote.Start(error)) return nullptr;
  return std::unique_ptr<Client>(new Client(std::move(impl)));
}

bool Client::Ping() const {
  return CodeOf(impl_->remote.Send({.interface = "org.freedesktop.DBus.Peer",
                                    .member = "Ping",
                                    .arguments = {},
                                    .read = [](sd_bus_message*) { return true; }})) ==
         kAccountSuccess;
}

AccountManager* Client::accounts() const { return &impl_->accounts; }

std::string Client::LastError() { return LastErrorOfThread(); }

AccountResult Client::ListUsers(ClientRows* users) const {
  return impl_->List("Users", "ListUsers", {}, ColumnsOf("GetUserInformation", {"user_uuid"}),
                     users);
}

AccountResult Client::ListFriends(const std::string& user_uuid, ClientRows* friends) const {
  return impl_->List("Friends", "ListFriends", {user_uuid},
                     ColumnsOf("GetFriendInformation", {"user_uuid", "friend_uuid"}), friends);
}

AccountResult Client::GetVersion(std::string* version) const {
  return impl_->GetProperty("Version", "s", version);
}

AccountResult Client::GetOpenSessions(int* count) const {
  return impl_->GetProperty("OpenSessions", "i", count);
}

AccountResult Client::GetSignInNeeded(std::vector<std::string>* user_uuids) const {
  return impl_->GetProperty("SignInNeeded", "as", user_uuids);
}

AccountResult Client::GetMetrics(std::string* text) const {
  return CodeOf(impl_->remote.Send(
      {.interface = std::string(bus::kInterfacePrefix) + "Gateway",
       .member = "Metrics",
       .arguments = {},
       .read = [text](sd_bus_message* reply) { return Output(text).Read(reply); }}));
}

int Client::AddListener(std::function<void(const ClientEvent&)> listener) {
  return impl_->remote.AddListener(std::move(listener));
}

void Client::RemoveListener(int number) { impl_->remote.RemoveListener(number); }

}  // namespace qorn
