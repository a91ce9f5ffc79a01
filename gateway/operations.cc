#include "gateway/operations.h"

#include <algorithm>

#include "gateway/operation_call.h"

namespace gateway {
namespace {

using Words = std::vector<std::string>;

// A function for the table out of a member function and the names of its outputs.
template <auto kMethod, const auto&... kNames>
bool Call(AccountManager& accounts, const Words& words, Answer* answer, std::string* error) {
  static_assert(sizeof...(kNames) == internal::Caller<kMethod>::kOutputs,
                "each output has one name");
  return internal::Caller<kMethod>::Call(accounts, words, {kNames...}, answer, error);
}

constexpr char kUserUuid[] = "user_uuid";
constexpr char kUserUuids[] = "user_uuids";
constexpr char kUserId[] = "user_id";
constexpr char kUserName[] = "user_name";
constexpr char kSignInState[] = "sign_in_state";
constexpr char kUserGuid[] = "user_guid";
constexpr char kAccessToken[] = "access_token";
constexpr char kRefreshToken[] = "refresh_token";
constexpr char kRegisteredDate[] = "registered_date";
constexpr char kLastSignInDate[] = "last_sign_in_date";
constexpr char kLastInfoChangedDate[] = "last_info_changed_date";
constexpr char kSessionId[] = "session_id";
constexpr char kConnectionFailed[] = "connection_failed";
constexpr char kValue[] = "value";
constexpr char kFriendUuid[] = "friend_uuid";
constexpr char kFriendUuids[] = "friend_uuids";
constexpr char kFriendId[] = "friend_id";
constexpr char kFriendName[] = "friend_name";
constexpr char kFriendGuid[] = "friend_guid";
constexpr char kFriendDeviceName[] = "friend_device_name";
constexpr char kFriendDeviceAddress[] = "friend_device_physical_address_text";
constexpr char kFriendPeerId[] = "friend_peer_id";
constexpr char kFriendAuthCode[] = "friend_auth_code";
constexpr char kLifetime[] = "lifetime";
constexpr char kPresenceServer[] = "presence_server";
constexpr char kStunServer[] = "stun_server";
constexpr char kTurnServer[] = "turn_server";
constexpr char kConnectionPort[] = "connection_port";
constexpr char kDomain[] = "domain";
constexpr char kPeerId[] = "peer_id";

// The types that read a token give a secret.
bool CallGetUserInfoByType(AccountManager& accounts, const Words& words, Answer* answer,
                           std::string* error) {
  if (!Call<&AccountManager::GetUserInfoByType, kValue>(accounts, words, answer, error)) {
    return false;
  }
  int type = 0;
  ParseInt(words[1], &type);
  const bool secret = type == kUserInfoGetAccessToken || type == kUserInfoGetRefreshToken;
  for (Field& output : answer->outputs) output.secret = secret;
  return true;
}

bool CallGetNetworkSettingStatus(AccountManager& accounts, const Words&, Answer* answer,
                                 std::string*) {
  answer->code = accounts.GetNetworkSettingStatus();
  answer->is_status = true;
  return true;
}

using Accounts = AccountManager;

const std::vector<Operation> kOperations = {
    {"create-user", "USER_ID CODE", "create a user from an authorisation code",
     Call<&Accounts::CreateUser, kUserUuid>},
    {"create-user-request", "FIRST SECOND", "place for a request between users; does nothing",
     Call<&Accounts::CreateUserRequest>},
    {"get-user-creation-request", "FIRST SECOND", "place for a request between users; does nothing",
     Call<&Accounts::GetUserCreationRequest>},
    {"remove-user", "USER_ID TARGET_USER_ID", "remove the target on behalf of the user",
     Call<&Accounts::RemoveUser>},
    {"remove-user-request", "FIRST SECOND", "place for a request between users; does nothing",
     Call<&Accounts::RemoveUserRequest>},
    {"search-user", "FIRST SECOND", "place for a request between users; does nothing",
     Call<&Accounts::SearchUser>},
    {"get-user-uuid-from-user-id", "USER_ID", "look up a user's UUID",
     Call<&Accounts::GetUserUUIDFromUserID, kUserUuid>},
    {"get-friend-uuid-from-friend-id-and-friend-peer-id", "USER_UUID FRIEND_ID FRIEND_PEER_ID",
     "look up a friend's UUID",
     Call<&Accounts::GetFriendUUIDFromFriendIDAndFriendPeerID, kFriendUuid>},
    {"sign-in", "USER_ID CODE", "sign a user in with an authorisation code",
     Call<&Accounts::SignIn, kUserUuid, kSessionId, kConnectionFailed>},
    {"sign-in-alt", "USER_ID PASSWORD", "sign a user in without the cloud",
     Call<&Accounts::SignInAlt, kUserUuid, kSessionId>},
    {"sign-out", "SESSION_ID", "close a session", Call<&Accounts::SignOut>},
    {"get-all-users-uuid", "", "list the UUIDs of all users",
     Call<&Accounts::GetAllUsersUUID, kUserUuids>},
    {"get-user-info-by-type", "USER_UUID TYPE",
     "read one field: 100 ID, 101 name, 102 sign-in state, 103 GUID, 104 and 105 tokens, 106 to "
     "108 dates",
     CallGetUserInfoByType},
    {"set-user-info-by-type", "USER_UUID TYPE VALUE", "change one field: 200 ID, 201 name",
     Call<&Accounts::SetUserInfoByType>},
    {"get-user-information", "USER_UUID", "read all fields of a user",
     Call<&Accounts::GetUserInformation, kUserId, kUserName, kSignInState, kUserGuid, kAccessToken,
          kRefreshToken, kRegisteredDate, kLastSignInDate, kLastInfoChangedDate>},
    {"add-friend-to-db",
     "USER_UUID FRIEND_ID FRIEND_GUID FRIEND_DEVICE_NAME FRIEND_DEVICE_ADDRESS FRIEND_PEER_ID",
     "store a friend", Call<&Accounts::AddFriendToDB, kFriendUuid>},
    {"add-friend-candidate", "USER_UUID FRIEND_ID FRIEND_PEER_ID",
     "invite a friend: gives the code that the friend must present",
     Call<&Accounts::AddFriendCandidate, kFriendAuthCode>},
    {"add-friend-request",
     "FRIEND_ID FRIEND_AUTH_CODE CODE FRIEND_DEVICE_MODEL_ID FRIEND_DEVICE_NAME "
     "FRIEND_DEVICE_ADDRESS",
     "complete an invitation with the friend's codes",
     Call<&Accounts::AddFriendRequest, kFriendUuid>},
    {"remove-friend-from-db", "USER_UUID FRIEND_ID FRIEND_PEER_ID", "delete a stored friend",
     Call<&Accounts::RemoveFriendFromDB>},
    {"remove-friend-request", "USER_UUID FRIEND_ID FRIEND_PEER_ID",
     "remove a friend from the cloud and from the store", Call<&Accounts::RemoveFriendRequest>},
    {"get-all-friends-uuid", "USER_UUID", "list the UUIDs of a user's friends",
     Call<&Accounts::GetAllFriendsUUID, kFriendUuids>},
    {"get-friend-information", "FRIEND_UUID", "read all fields of a friend",
     Call<&Accounts::GetFriendInformation, kFriendId, kFriendName, kFriendGuid, kFriendDeviceName,
          kFriendDeviceAddress, kFriendPeerId>},
    {"do-factory-reset", "", "delete all users, friends and sessions",
     Call<&Accounts::DoFactoryReset>},
    {"get-session-info", "SESSION_ID", "tell whose session it is",
     Call<&Accounts::GetSessionInfo, kUserId>},
    {"check-session-validation", "SESSION_ID", "tell whether the session is open",
     Call<&Accounts::CheckSessionValidation>},
    {"reset-count-for-session-maintenance", "SESSION_ID", "keep a session alive",
     Call<&Accounts::ResetCountForSessionMaintenance>},
    {"get-session-lifetime", "", "tell how many minutes an idle session lives",
     Call<&Accounts::GetSessionLifetime, kLifetime>},
    {"set-session-lifetime", "LIFETIME", "change how many minutes an idle session lives",
     Call<&Accounts::SetSessionLifetime>},
    {"get-network-setting-status", "", "1 once the traversal servers were fetched, else 0",
     CallGetNetworkSettingStatus},
    {"get-nts-server-info-and-peer-id", "", "the traversal servers and this gateway's peer ID",
     Call<&Accounts::GetNTSServerInfoAndPeerID, kPresenceServer, kStunServer, kTurnServer,
          kConnectionPort, kDomain, kPeerId>},
    {"parse-account-message", "MESSAGE", "handle a JSON message of another module",
     Call<&Accounts::ParseAccountMessage>},
    {"refresh-access-token", "USER_ID", "renew a user's tokens",
     Call<&Accounts::RefreshAccessToken>},
};

}  // namespace

const std::vector<Operation>& Operations() { return kOperations; }

const Operation* FindOperation(const std::string& name) {
  auto found = std::find_if(kOperations.begin(), kOperations.end(),
                            [&name](const Operation& operation) { return name == operation.name; });
  return found == kOperations.end() ? nullptr : &*found;
}

}  // namespace gateway
