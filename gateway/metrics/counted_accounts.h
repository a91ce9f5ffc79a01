// The account interface, which counts the calls that go through it.
#ifndef QORN_GATEWAY_METRICS_COUNTED_ACCOUNTS_H_
#define QORN_GATEWAY_METRICS_COUNTED_ACCOUNTS_H_

#include <atomic>
#include <string>
#include <utility>
#include <vector>

#include "core_fw/account/include/account_manager.h"
#include "gateway/metrics/operation_counts.h"

namespace gateway {

// Thread-safe.
class CountedAccounts : public AccountManager {
  using Clock = OperationCounts::Clock;

  // Calls the method with what its result is called with.
  template <auto kMethod>
  auto Count(const char* name) {
    static const size_t index = OperationCounts::IndexOf(name);
    return [this, operation = index](auto&&... arguments) {
      const auto start = Clock::now();
      const int result = (accounts()->*kMethod)(std::forward<decltype(arguments)>(arguments)...);
      counts_->Add(operation, result, Clock::now() - start);
      return result;
    };
  }

 public:
  // Borrows the counts.
  explicit CountedAccounts(OperationCounts* counts) : counts_(counts) {}

  // Calls go to `accounts`, borrowed, and may come from now on.
  void set_accounts(AccountManager* accounts) { accounts_ = accounts; }
  AccountManager* accounts() const { return accounts_; }

  AccountResult SignIn(const std::string& user_id, const std::string& auth_code,
                       std::string* user_uuid, std::string* session_id,
                       bool* connection_failed) override {
    const AccountResult result = Count<&AccountManager::SignIn>("SignIn")(
        user_id, auth_code, user_uuid, session_id, connection_failed);
    // The server has refused the code.
    if (result == kAccountZepServerFailure && !*connection_failed) counts_->NoteCloudAnswer();
    return result;
  }

// Each of the others does nothing but count. A macro, so that name and operation cannot differ.
// NOLINTBEGIN(bugprone-macro-parentheses): `arguments` are in parentheses of their own.
#define QORN_COUNTED(name, parameters, arguments) \
  AccountResult name parameters override { return Count<&AccountManager::name>(#name) arguments; }
  // NOLINTEND(bugprone-macro-parentheses)
  using Text = const std::string&;
  using Out = std::string*;
  using List = std::vector<std::string>*;

  QORN_COUNTED(CreateUser, (Text a, Text b, Out x), (a, b, x))
  QORN_COUNTED(CreateUserRequest, (Text a, Text b), (a, b))
  QORN_COUNTED(GetUserCreationRequest, (Text a, Text b), (a, b))
  QORN_COUNTED(RemoveUser, (Text a, Text b), (a, b))
  QORN_COUNTED(RemoveUserRequest, (Text a, Text b), (a, b))
  QORN_COUNTED(SearchUser, (Text a, Text b), (a, b))
  QORN_COUNTED(GetUserUUIDFromUserID, (Text a, Out x), (a, x))
  QORN_COUNTED(GetFriendUUIDFromFriendIDAndFriendPeerID, (Text a, Text b, Text c, Out x),
               (a, b, c, x))
  QORN_COUNTED(SignInAlt, (Text a, Text b, Out x, Out y), (a, b, x, y))
  QORN_COUNTED(SignOut, (Text a), (a))
  QORN_COUNTED(GetAllUsersUUID, (List x), (x))
  QORN_COUNTED(GetUserInfoByType, (Text a, int type, Out x), (a, type, x))
  QORN_COUNTED(SetUserInfoByType, (Text a, int type, Text b), (a, type, b))
  QORN_COUNTED(GetUserInformation,
               (Text a, Out x, Out y, Out z, Out t, Out u, Out v, Out w, Out p, Out q),
               (a, x, y, z, t, u, v, w, p, q))
  QORN_COUNTED(AddFriendToDB, (Text a, Text b, Text c, Text d, Text e, Text f, Out x),
               (a, b, c, d, e, f, x))
  QORN_COUNTED(AddFriendCandidate, (Text a, Text b, Text c, Out x), (a, b, c, x))
  QORN_COUNTED(AddFriendRequest, (Text a, Text b, Text c, Text d, Text e, Text f, Out x),
               (a, b, c, d, e, f, x))
  QORN_COUNTED(RemoveFriendFromDB, (Text a, Text b, Text c), (a, b, c))
  QORN_COUNTED(RemoveFriendRequest, (Text a, Text b, Text c), (a, b, c))
  QORN_COUNTED(GetAllFriendsUUID, (Text a, List x), (a, x))
  QORN_COUNTED(GetFriendInformation, (Text a, Out x, Out y, Out z, Out t, Out u, Out v),
               (a, x, y, z, t, u, v))
  QORN_COUNTED(DoFactoryReset, (), ())
  QORN_COUNTED(GetSessionInfo, (Text a, Out x), (a, x))
  QORN_COUNTED(CheckSessionValidation, (Text a), (a))
  QORN_COUNTED(ResetCountForSessionMaintenance, (Text a), (a))
  QORN_COUNTED(GetSessionLifetime, (int* lifetime), (lifetime))
  QORN_COUNTED(SetSessionLifetime, (int lifetime), (lifetime))
  QORN_COUNTED(GetNetworkSettingStatus, (), ())
  QORN_COUNTED(GetNTSServerInfoAndPeerID, (Out x, Out y, Out z, Out t, Out u, Out v),
               (x, y, z, t, u, v))
  QORN_COUNTED(ParseAccountMessage, (Text a), (a))
  QORN_COUNTED(RefreshAccessToken, (Text a), (a))
#undef QORN_COUNTED

 private:
  OperationCounts* const counts_;
  std::atomic<AccountManager*> accounts_{nullptr};
};

}  // namespace gateway

#endif  // QORN_GATEWAY_METRICS_COUNTED_ACCOUNTS_H_
