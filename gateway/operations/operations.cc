#include "gateway/operations/operations.h"

#include <algorithm>
#include <array>
#include <utility>

#include "gateway/operations/operation_call.h"

namespace gateway {
namespace {

using namespace parameter;  // NOLINT: the table below is made of them

using Accounts = AccountManager;

constexpr char kUsers[] = "Users";
constexpr char kSessions[] = "Sessions";
constexpr char kFriends[] = "Friends";
constexpr char kGateway[] = "Gateway";

template <typename... Each>
std::array<Parameter, sizeof...(Each)> Takes(const Each&... arguments) {
  return {arguments...};
}

template <typename... Each>
std::array<Parameter, sizeof...(Each)> Gives(const Each&... outputs) {
  return {outputs...};
}

// An operation whose arguments and outputs are as many as the member function has.
template <auto kMethod, size_t kArguments, size_t kOutputs>
Operation Describe(const char* name, const char* group, const char* help,
                   const std::array<Parameter, kArguments>& takes,
                   const std::array<Parameter, kOutputs>& gives, const std::vector<int>& results,
                   Operation::Invoker invoke = &internal::Caller<kMethod>::Call) {
  static_assert(kArguments == internal::Caller<kMethod>::kArguments, "each argument has a record");
  static_assert(kOutputs == internal::Caller<kMethod>::kOutputs, "each output has a record");
  return {.name = name,
          .group = group,
          .help = help,
          .arguments = {takes.begin(), takes.end()},
          .outputs = {gives.begin(), gives.end()},
          .results = results,
          .invoke = invoke};
}

// Two of the types read a token; what the others read is no secret.
bool CallGetUserInfoByType(const Operation& operation, AccountManager& accounts,
                           const std::vector<std::string>& words, Answer* answer,
                           std::string* error) {
  if (!internal::Caller<&Accounts::GetUserInfoByType>::Call(operation, accounts, words, answer,
                                                            error)) {
    return false;
  }
  int type = 0;
  ParseInt(words[1], &type);
  const bool secret = type == kUserInfoGetAccessToken || type == kUserInfoGetRefreshToken;
  for (Field& output : answer->outputs) output.secret = secret;
  return true;
}

const std::vector<Operation> kOperations = {
    Describe<&Accounts::CreateUser>(
        "CreateUser", kUsers, "create a user from an authorisation code", Takes(kUserId, kAuthCode),
        Gives(kUserUuid), {1, 3, 4, 12, 13, 15, 16, 19}),
    Describe<&Accounts::CreateUserRequest>("CreateUserRequest", kUsers,
                                           "place for a request between users; does nothing",
                                           Takes(kFirst, kSecond), Gives(), {1}),
    Describe<&Accounts::GetUserCreationRequest>("GetUserCreationRequest", kUsers,
                                                "place for a request between users; does nothing",
                                                Takes(kFirst, kSecond), Gives(), {1}),
    Describe<&Accounts::RemoveUser>("RemoveUser", kUsers, "remove the target on behalf of the user",
                                    Takes(kUserId, kTargetUserId), Gives(),
                                    {1, 3, 4, 5, 6, 16, 19}),
    Describe<&Accounts::RemoveUserRequest>("RemoveUserRequest", kUsers,
                                           "place for a request between users; does nothing",
                                           Takes(kFirst, kSecond), Gives(), {1}),
    Describe<&Accounts::SearchUser>("SearchUser", kUsers,
                                    "place for a request between users; does nothing",
                                    Takes(kFirst, kSecond), Gives(), {1}),
    Describe<&Accounts::GetUserUUIDFromUserID>("GetUserUUIDFromUserID", kUsers,
                                               "look up a user's UUID", Takes(kUserId),
                                               Gives(kUserUuid), {1, 3, 4, 5}),
    Describe<&Accounts::GetFriendUUIDFromFriendIDAndFriendPeerID>(
        "GetFriendUUIDFromFriendIDAndFriendPeerID", kFriends, "look up a friend's UUID",
        Takes(kUserUuid, kFriendId, kFriendPeerId), Gives(kFriendUuid), {1, 3, 4, 8}),
    Describe<&Accounts::SignIn>(
        "SignIn", kSessions, "sign a user in with an authorisation code", Takes(kUserId, kAuthCode),
        Gives(kUserUuid, kSessionId, kConnectionFailed), {1, 3, 4, 5, 7, 15, 19}),
    Describe<&Accounts::SignInAlt>("SignInAlt", kSessions, "sign a user in without the cloud",
                                   Takes(kUserId, kPassword), Gives(kUserUuid, kSessionId),
                                   {1, 3, 4, 5, 19}),
    Describe<&Accounts::SignOut>("SignOut", kSessions, "close a session", Takes(kSessionId),
                                 Gives(), {1, 2, 3, 4, 5, 19}),
    Describe<&Accounts::GetAllUsersUUID>("GetAllUsersUUID", kUsers, "list the UUIDs of all users",
                                         Takes(), Gives(kUserUuids), {1, 3, 4}),
    Describe<&Accounts::GetUserInfoByType>("GetUserInfoByType", kUsers,
                                           "read one field: 100 ID, 101 name, 102 sign-in state, "
                                           "103 GUID, 104 and 105 tokens, 106 to 108 dates",
                                           Takes(kUserUuid, kType), Gives(kReadValue),
                                           {1, 2, 3, 4, 6}, &CallGetUserInfoByType),
    Describe<&Accounts::SetUserInfoByType>(
        "SetUserInfoByType", kUsers, "change one field: 200 ID, 201 name",
        Takes(kUserUuid, kType, kNewValue), Gives(), {1, 2, 3, 4, 6, 19}),
    Describe<&Accounts::GetUserInformation>(
        "GetUserInformation", kUsers, "read all fields of a user", Takes(kUserUuid),
        Gives(kUserId, kUserName, kSignInState, kUserGuid, kAccessToken, kRefreshToken,
              kRegisteredDate, kLastSignInDate, kLastInfoChangedDate),
        {1, 2, 3, 4, 6}),
    Describe<&Accounts::AddFriendToDB>("AddFriendToDB", kFriends, "store a friend",
                                       Takes(kUserUuid, kFriendId, kFriendGuid, kFriendDeviceName,
                                             kFriendDeviceAddress, kFriendPeerId),
                                       Gives(kFriendUuid), {1, 3, 4, 14, 19}),
    Describe<&Accounts::AddFriendCandidate>(
        "AddFriendCandidate", kFriends,
        "invite a friend: gives the code that the friend must present",
        Takes(kUserUuid, kFriendId, kFriendPeerId), Gives(kFriendAuthCode), {1, 14}),
    Describe<&Accounts::AddFriendRequest>(
        "AddFriendRequest", kFriends, "complete an invitation with the friend's codes",
        Takes(kFriendId, kFriendAuthCode, kOAuthAuthCode, kFriendDeviceModelId, kFriendDeviceName,
              kFriendDeviceAddress),
        Gives(kFriendUuid), {1, 3, 4, 6, 10, 14, 15, 16, 19}),
    Describe<&Accounts::RemoveFriendFromDB>(
        "RemoveFriendFromDB", kFriends, "delete a stored friend",
        Takes(kUserUuid, kFriendId, kFriendPeerId), Gives(), {1, 3, 4, 8, 19}),
    Describe<&Accounts::RemoveFriendRequest>(
        "RemoveFriendRequest", kFriends, "remove a friend from the cloud and from the store",
        Takes(kUserUuid, kFriendId, kFriendPeerId), Gives(), {1, 3, 4, 6, 8, 9, 16, 19}),
    Describe<&Accounts::GetAllFriendsUUID>("GetAllFriendsUUID", kFriends,
                                           "list the UUIDs of a user's friends", Takes(kUserUuid),
                                           Gives(kFriendUuids), {1, 3, 4}),
    Describe<&Accounts::GetFriendInformation>(
        "GetFriendInformation", kFriends, "read all fields of a friend", Takes(kFriendUuid),
        Gives(kFriendId, kFriendName, kFriendGuid, kFriendDeviceName, kFriendDeviceAddress,
              kFriendPeerId),
        {1, 3, 4, 9}),
    Describe<&Accounts::DoFactoryReset>("DoFactoryReset", kGateway,
                                        "delete all users, friends and sessions", Takes(), Gives(),
                                        {1, 3, 4}),
    Describe<&Accounts::GetSessionInfo>("GetSessionInfo", kSessions, "tell whose session it is",
                                        Takes(kSessionId), Gives(kUserId), {1, 2}),
    Describe<&Accounts::CheckSessionValidation>("CheckSessionValidation", kSessions,
                                                "tell whether the session is open",
                                                Takes(kSessionId), Gives(), {1, 2}),
    Describe<&Accounts::ResetCountForSessionMaintenance>("ResetCountForSessionMaintenance",
                                                         kSessions, "keep a session alive",
                                                         Takes(kSessionId), Gives(), {1}),
    Describe<&Accounts::GetSessionLifetime>("GetSessionLifetime", kSessions,
                                            "tell how many minutes an idle session lives", Takes(),
                                            Gives(kLifetime), {1}),
    Describe<&Accounts::SetSessionLifetime>("SetSessionLifetime", kSessions,
                                            "change how many minutes an idle session lives",
                                            Takes(kLifetime), Gives(), {1}),
    Describe<&Accounts::GetNetworkSettingStatus>(
        "GetNetworkSettingStatus", kGateway, "1 once the traversal servers were fetched, else 0",
        Takes(), Gives(), {}),
    Describe<&Accounts::GetNTSServerInfoAndPeerID>(
        "GetNTSServerInfoAndPeerID", kGateway, "the traversal servers and this gateway's peer ID",
        Takes(),
        Gives(kPresenceServer, kStunServer, kTurnServer, kConnectionPort, kDomain, kPeerId), {1}),
    Describe<&Accounts::ParseAccountMessage>("ParseAccountMessage", kFriends,
                                             "handle a JSON message of another module",
                                             Takes(kMessage), Gives(), {1, 3, 4, 5, 8, 14, 19}),
    Describe<&Accounts::RefreshAccessToken>("RefreshAccessToken", kUsers, "renew a user's tokens",
                                            Takes(kUserId), Gives(), {1, 19}),
};

}  // namespace

bool Operation::Call(AccountManager& accounts, const std::vector<std::string>& words,
                     Answer* answer, std::string* error) const {
  answer->is_status = results.empty();
  return invoke(*this, accounts, words, answer, error);
}

const std::vector<Operation>& Operations() { return kOperations; }

const Operation* FindOperation(const std::string& name) {
  auto found = std::find_if(kOperations.begin(), kOperations.end(),
                            [&name](const Operation& operation) { return name == operation.name; });
  return found == kOperations.end() ? nullptr : &*found;
}

}  // namespace gateway
