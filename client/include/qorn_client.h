// The account service of a running gateway, from another process.
//
//   std::string error;
//   const auto client = qorn::Client::Connect("system", &error);
//   if (client == nullptr) return Fail(error);
//   std::vector<std::string> users;
//   if (client->accounts()->GetAllUsersUUID(&users) != kAccountSuccess) Fail(client->LastError());
//
// Threads: all functions may be called from any thread, and calls of several threads go out side by
// side. Each blocks until its answer is there. Listeners run on the client's own thread and must
// not call into the client.
//
// Binary contract: as in account_manager.h.
#ifndef QORN_CLIENT_INCLUDE_QORN_CLIENT_H_
#define QORN_CLIENT_INCLUDE_QORN_CLIENT_H_

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core_fw/account/include/account_manager.h"

namespace qorn {

struct ClientOptions {
  // "system", "session" or a D-Bus address such as "unix:path=/run/bus".
  std::string address = "system";
  // How long one call may take. The gateway waits for its cloud without a limit.
  std::chrono::seconds timeout{120};
  // Gets one line when a call waits because the gateway asked for it. On the calling thread.
  std::function<void(const std::string&)> on_wait = {};
};

// A change that the gateway told of. It names no authorisation code and no session.
struct ClientEvent {
  int type = 0;      // kEventAccount...
  std::string name;  // "kEventAccountCreateUser"
  // Names and values in the order of the event's payload: {"user_uuid", "..."}.
  std::vector<std::pair<std::string, std::string>> fields;
};

// Rows of names and values.
using ClientRows = std::vector<std::vector<std::pair<std::string, std::string>>>;

class __attribute__((visibility("default"))) Client {
 public:
  // Null with one line in `error` when the bus cannot be reached. A gateway need not be there yet.
  static std::unique_ptr<Client> Connect(const ClientOptions& options, std::string* error);
  // No call may be running.
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  // Whether the gateway answers; otherwise LastError tells why not.
  bool Ping() const;

  // The 32 operations, with results and outputs as inside the gateway, but for these:
  // - kAccountFailure also stands for what has failed on the way: LastError tells what.
  // - An operation that fails writes no outputs, but for `connection_failed`.
  // - GetUserInformation writes tokens only for callers who may read them.
  // - Texts that are not UTF-8, hold zero bytes or control characters, or are longer than 64 KiB
  //   together are refused with kAccountFailure.
  // When the gateway says that a caller asks too much, the call waits as long as it says, once.
  // Valid while the client lives.
  AccountManager* accounts() const;

  // One line about the latest call of this thread, on any client, that failed on its way or was
  // refused; "" after a call whose answer came from an operation.
  static std::string LastError();

  // All users, or the friends of one user or, for "", of all, in one call. The fields are named as
  // the outputs of GetUserInformation and GetFriendInformation, after "user_uuid" and
  // "friend_uuid"; no tokens. Results as of the operations that read them.
  AccountResult ListUsers(ClientRows* users) const;
  AccountResult ListFriends(const std::string& user_uuid, ClientRows* friends) const;

  // 1, or 19 when the gateway does not answer.
  AccountResult GetVersion(std::string* version) const;
  AccountResult GetOpenSessions(int* count) const;
  // The UUIDs of the users whose tokens the gateway cannot keep fresh until they sign in.
  AccountResult GetSignInNeeded(std::vector<std::string>* user_uuids) const;
  // What the gateway counts, in Prometheus's text format.
  AccountResult GetMetrics(std::string* text) const;

  // Calls `listener` for each event until the listener is removed. The number is for
  // RemoveListener, after whose return it does not run any more.
  int AddListener(std::function<void(const ClientEvent&)> listener);
  void RemoveListener(int number);

 private:
  class Impl;
  explicit Client(std::unique_ptr<Impl> impl);

  const std::unique_ptr<Impl> impl_;
};

}  // namespace qorn

#endif  // QORN_CLIENT_INCLUDE_QORN_CLIENT_H_
