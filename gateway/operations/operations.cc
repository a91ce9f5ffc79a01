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
Operation Describe(const char* name, const char* group, Right right, Backend backend,
                   const char* help, const std::array<Parameter, kArguments>& takes,
                   const std::array<Parameter, kOutputs>& gives, const std::vector<int>& results,
                   Operation::Invoker invoke = &internal::Caller<kMethod>::Call) {
  static_assert(kArguments == internal::Caller<kMethod>::kArguments, "each argument has a record");
  static_assert(kOutputs == internal::Caller<kMethod>::kOutputs, "each output has a record");
  return {.name = name,
          .group = group,
          .right = right,
          .backend = backend,
          .help = help,
          .arguments = {takes.begin(), takes.end()},
          .argument_shapes = internal::Caller<kMethod>::ArgumentShapes(),
          .outputs = {gives.begin(), gives.end()},
          .output_shapes = internal::Caller<kMethod>::OutputShapes(),
          .results = results,
          .invoke = invoke};
}

// Whether the words of a GetUserInfoByType read a token.
bool ReadsToken(const std::vector<std::string>& words) {
  int type = 0;
  ParseInt(words[1], &type);
  return type == kUserInfoGetAccessToken || type == kUserInfoGetRefreshToken;
}

// What the other types read is no secret.
bool CallGetUserInfoByType(const Operation& operation, AccountManager& accounts,
                           const std::vector<std::string>& words, Answer* answer,
                           std::string* error) {
  if (!internal::Caller<&Accounts::GetUserInfoByType>::Call(operation, accounts, words, answer,
                                                            error)) {
    return false;
  }
  for (Field& output : answer->outputs) output.secret = ReadsToken(words);
  return true;
}

const std::vector<Operation> kOperations = {
    Describe<&Accounts::CreateUser>("CreateUser", kUsers, Right::kManage, Backend::kCloud,
                                    "create a user from an authorisation code",
                                    Takes(kUserId, kAuthCode), Gives(kUserUuid),
                                    {1, 3, 4, 12, 13, 15, 16, 19}),
    Describe<&Accounts::CreateUserRequest>(
        "CreateUserRequest", kUsers, Right::kManage, Backend::kMemory,
        "place for a request between users; does nothing", Takes(kFirst, kSecond), Gives(), {1}),
    Describe<&Accounts::GetUserCreationRequest>(
        "GetUserCreationRequest", kUsers, Right::kManage, Backend::kMemory,
        "place for a request between users; does nothing", Takes(kFirst, kSecond), Gives(), {1}),
    Describe<&Accounts::RemoveUser>("RemoveUser", kUsers, Right::kManage, Backend::kCloud,
                                    "remove the target on behalf of the user",
                                    Takes(kUserId, kTargetUserId), Gives(),
                                    {1, 3, 4, 5, 6, 16, 19}),
    Describe<&Accounts::RemoveUserRequest>(
        "RemoveUserRequest", kUsers, Right::kManage, Backend::kMemory,
        "place for a request between users; does nothing", Takes(kFirst, kSecond), Gives(), {1}),
    Describe<&Accounts::SearchUser>("SearchUser", kUsers, Right::kManage, Backend::kMemory,
                                    "place for a request between users; does nothing",
                                    Takes(kFirst, kSecond), Gives(), {1}),
    Describe<&Accounts::GetUserUUIDFromUserID>("GetUserUUIDFromUserID", kUsers, Right::kLook,
                                               Backend::kDatabase, "look up a user's UUID",
                                               Takes(kUserId), Gives(kUserUuid), {1, 3, 4, 5}),
    Describe<&Accounts::GetFriendUUIDFromFriendIDAndFriendPeerID>(
        "GetFriendUUIDFromFriendIDAndFriendPeerID", kFriends, Right::kLook, Backend::kDatabase,
        "look up a friend's UUID", Takes(kUserUuid, kFriendId, kFriendPeerId), Gives(kFriendUuid),
        {1, 3, 4, 8}),
    Describe<&Accounts::SignIn>(
        "SignIn", kSessions, Right::kSignIn, Backend::kCloud,
        "sign a user in with an authorisation code", Takes(kUserId, kAuthCode),
        Gives(kUserUuid, kSessionId, kConnectionFailed), {1, 3, 4, 5, 7, 15, 19}),
    Describe<&Accounts::SignInAlt>("SignInAlt", kSessions, Right::kSignIn, Backend::kDatabase,
                                   "sign a user in without the cloud", Takes(kUserId, kPassword),
                                   Gives(kUserUuid, kSessionId), {1, 3, 4, 5, 19}),
    Describe<&Accounts::SignOut>("SignOut", kSessions, Right::kSignIn, Backend::kDatabase,
                                 "close a session", Takes(kSessionId), Gives(),
                                 {1, 2, 3, 4, 5, 19}),
    Describe<&Accounts::GetAllUsersUUID>("GetAllUsersUUID", kUsers, Right::kLook,
                                         Backend::kDatabase, "list the UUIDs of all users", Takes(),
                                         Gives(kUserUuids), {1, 3, 4}),
    Describe<&Accounts::GetUserInfoByType>(
        "GetUserInfoByType", kUsers, Right::kLook, Backend::kDatabase,
        "read one field: 100 ID, 101 name, 102 sign-in state, "
        "103 GUID, 104 and 105 tokens, 106 to 108 dates",
        Takes(kUserUuid, kType), Gives(kReadValue), {1, 2, 3, 4, 6}, &CallGetUserInfoByType),
    Describe<&Accounts::SetUserInfoByType>("SetUserInfoByType", kUsers, Right::kManage,
                                           Backend::kDatabase, "change one field: 200 ID, 201 name",
                                           Takes(kUserUuid, kType, kNewValue), Gives(),
                                           {1, 2, 3, 4, 6, 19}),
    Describe<&Accounts::GetUserInformation>(
        "GetUserInformation", kUsers, Right::kLook, Backend::kDatabase, "read all fields of a user",
        Takes(kUserUuid),
        Gives(kUserId, kUserName, kSignInState, kUserGuid, kAccessToken, kRefreshToken,
              kRegisteredDate, kLastSignInDate, kLastInfoChangedDate),
        {1, 2, 3, 4, 6}),
    Describe<&Accounts::AddFriendToDB>("AddFriendToDB", kFriends, Right::kManage,
                                       Backend::kDatabase, "store a friend",
                                       Takes(kUserUuid, kFriendId, kFriendGuid, kFriendDeviceName,
                                             kFriendDeviceAddress, kFriendPeerId),
                                       Gives(kFriendUuid), {1, 3, 4, 14, 19}),
    Describe<&Accounts::AddFriendCandidate>(
        "AddFriendCandidate", kFriends, Right::kManage, Backend::kDatabase,
        "invite a friend: gives the code that the friend must present",
        Takes(kUserUuid, kFriendId, kFriendPeerId), Gives(kFriendAuthCode), {1, 14}),
    Describe<&Accounts::AddFriendRequest>(
        "AddFriendRequest", kFriends, Right::kManage, Backend::kCloud,
        "complete an invitation with the friend's codes",
        Takes(kFriendId, kFriendAuthCode, kOAuthAuthCode, kFriendDeviceModelId, kFriendDeviceName,
              kFriendDeviceAddress),
        Gives(kFriendUuid), {1, 3, 4, 6, 10, 14, 15, 16, 19}),
    Describe<&Accounts::RemoveFriendFromDB>("RemoveFriendFromDB", kFriends, Right::kManage,
                                            Backend::kDatabase, "delete a stored friend",
                                            Takes(kUserUuid, kFriendId, kFriendPeerId), Gives(),
                                            {1, 3, 4, 8, 19}),
    Describe<&Accounts::RemoveFriendRequest>(
        "RemoveFriendRequest", kFriends, Right::kManage, Backend::kCloud,
        "remove a friend from the cloud and from the store",
        Takes(kUserUuid, kFriendId, kFriendPeerId), Gives(), {1, 3, 4, 6, 8, 9, 16, 19}),
    Describe<&Accounts::GetAllFriendsUUID>("GetAllFriendsUUID", kFriends, Right::kLook,
                                           Backend::kDatabase, "list the UUIDs of a user's friends",
                                           Takes(kUserUuid), Gives(kFriendUuids), {1, 3, 4}),
    Describe<&Accounts::GetFriendInformation>(
        "GetFriendInformation", kFriends, Right::kLook, Backend::kDatabase,
        "read all fields of a friend", Takes(kFriendUuid),
        Gives(kFriendId, kFriendName, kFriendGuid, kFriendDeviceName, kFriendDeviceAddress,
              kFriendPeerId),
        {1, 3, 4, 9}),
    Describe<&Accounts::DoFactoryReset>(
        "DoFactoryReset", kGateway, Right::kReset, Backend::kDatabase,
        "delete all users, friends and sessions", Takes(), Gives(), {1, 3, 4}),
    Describe<&Accounts::GetSessionInfo>("GetSessionInfo", kSessions, Right::kLook, Backend::kMemory,
                                        "tell whose session it is", Takes(kSessionId),
                                        Gives(kUserId), {1, 2}),
    Describe<&Accounts::CheckSessionValidation>(
        "CheckSessionValidation", kSessions, Right::kLook, Backend::kMemory,
        "tell whether the session is open", Takes(kSessionId), Gives(), {1, 2}),
    Describe<&Accounts::ResetCountForSessionMaintenance>(
        "ResetCountForSessionMaintenance", kSessions, Right::kSignIn, Backend::kMemory,
        "keep a session alive", Takes(kSessionId), Gives(), {1}),
    Describe<&Accounts::GetSessionLifetime>(
        "GetSessionLifetime", kSessions, Right::kLook, Backend::kMemory,
        "tell how many minutes an idle session lives", Takes(), Gives(kLifetime), {1}),
    Describe<&Accounts::SetSessionLifetime>(
        "SetSessionLifetime", kSessions, Right::kManage, Backend::kMemory,
        "change how many minutes an idle session lives", Takes(kLifetime), Gives(), {1}),
    Describe<&Accounts::GetNetworkSettingStatus>(
        "GetNetworkSettingStatus", kGateway, Right::kLook, Backend::kMemory,
        "1 once the traversal servers were fetched, else 0", Takes(), Gives(), {}),
    Describe<&Accounts::GetNTSServerInfoAndPeerID>(
        "GetNTSServerInfoAndPeerID", kGateway, Right::kLook, Backend::kMemory,
        "the traversal servers and this gateway's peer ID", Takes(),
        Gives(kPresenceServer, kStunServer, kTurnServer, kConnectionPort, kDomain, kPeerId), {1}),
    Describe<&Accounts::ParseAccountMessage>("ParseAccountMessage", kFriends, Right::kManage,
                                             Backend::kDatabase,
                                             "handle a JSON message of another module",
                                             Takes(kMessage), Gives(), {1, 3, 4, 5, 8, 14, 19}),
    Describe<&Accounts::RefreshAccessToken>("RefreshAccessToken", kUsers, Right::kManage,
                                            Backend::kCloud, "renew a user's tokens",
                                            Takes(kUserId), Gives(), {1, 19}),
};

}  // namespace

bool Operation::Call(AccountManager& accounts, const std::vector<std::string>& words,
                     Answer* answer, std::string* error) const {
  answer->is_status = results.empty();
  return invoke(*this, accounts, words, answer, error);
}

const std::vector<Operation>& Operations() { return kOperations; }

Right RightNeeded(const Operation& operation, const std::vector<std::string>& words) {
  const bool reads_token = operation.invoke == &CallGetUserInfoByType && ReadsToken(words);
  return reads_token ? Right::kSecrets : operation.right;
}

const Operation* FindOperation(const std::string& name) {
  auto found = std::find_if(kOperations.begin(), kOperations.end(),
                            [&name](const Operation& operation) { return name == operation.name; });
  return found == kOperations.end() ? nullptr : &*found;
}

}  // namespace gateway
