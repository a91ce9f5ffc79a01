#include "gateway/operations/operations.h"

#include <algorithm>

#include "gateway/operations/operation_call.h"

namespace gateway {
namespace {

using Words = std::vector<std::string>;

constexpr char kUsers[] = "Users";
constexpr char kSessions[] = "Sessions";
constexpr char kFriends[] = "Friends";
constexpr char kGateway[] = "Gateway";

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
    {{"create-user", "create", kUsers, "USER_ID CODE", "create a user from an authorisation code",
      "1 3 4 12 13 15 16 19"},
     Call<&Accounts::CreateUser, kUserUuid>},
    {{"create-user-request", "", kUsers, "FIRST SECOND",
      "place for a request between users; does nothing", "1"},
     Call<&Accounts::CreateUserRequest>},
    {{"get-user-creation-request", "", kUsers, "FIRST SECOND",
      "place for a request between users; does nothing", "1"},
     Call<&Accounts::GetUserCreationRequest>},
    {{"remove-user", "remove", kUsers, "USER_ID TARGET_USER_ID",
      "remove the target on behalf of the user", "1 3 4 5 6 16 19"},
     Call<&Accounts::RemoveUser>},
    {{"remove-user-request", "", kUsers, "FIRST SECOND",
      "place for a request between users; does nothing", "1"},
     Call<&Accounts::RemoveUserRequest>},
    {{"search-user", "", kUsers, "FIRST SECOND", "place for a request between users; does nothing",
      "1"},
     Call<&Accounts::SearchUser>},
    {{"get-user-uuid-from-user-id", "uuid", kUsers, "USER_ID", "look up a user's UUID", "1 3 4 5"},
     Call<&Accounts::GetUserUUIDFromUserID, kUserUuid>},
    {{"get-friend-uuid-from-friend-id-and-friend-peer-id", "friend-uuid", kFriends,
      "USER_UUID FRIEND_ID FRIEND_PEER_ID", "look up a friend's UUID", "1 3 4 8"},
     Call<&Accounts::GetFriendUUIDFromFriendIDAndFriendPeerID, kFriendUuid>},
    {{"sign-in", "in", kSessions, "USER_ID CODE", "sign a user in with an authorisation code",
      "1 3 4 5 7 15 19"},
     Call<&Accounts::SignIn, kUserUuid, kSessionId, kConnectionFailed>},
    {{"sign-in-alt", "in-alt", kSessions, "USER_ID PASSWORD", "sign a user in without the cloud",
      "1 3 4 5 19"},
     Call<&Accounts::SignInAlt, kUserUuid, kSessionId>},
    {{"sign-out", "out", kSessions, "SESSION_ID", "close a session", "1 2 3 4 5 19"},
     Call<&Accounts::SignOut>},
    {{"get-all-users-uuid", "uuids", kUsers, "", "list the UUIDs of all users", "1 3 4"},
     Call<&Accounts::GetAllUsersUUID, kUserUuids>},
    {{"get-user-info-by-type", "get", kUsers, "USER_UUID TYPE",
      "read one field: 100 ID, 101 name, 102 sign-in state, 103 GUID, 104 and 105 tokens, 106 to "
      "108 dates",
      "1 2 3 4 6"},
     CallGetUserInfoByType},
    {{"set-user-info-by-type", "change", kUsers, "USER_UUID TYPE VALUE",
      "change one field: 200 ID, 201 name", "1 2 3 4 6 19"},
     Call<&Accounts::SetUserInfoByType>},
    {{"get-user-information", "info", kUsers, "USER_UUID", "read all fields of a user",
      "1 2 3 4 6"},
     Call<&Accounts::GetUserInformation, kUserId, kUserName, kSignInState, kUserGuid, kAccessToken,
          kRefreshToken, kRegisteredDate, kLastSignInDate, kLastInfoChangedDate>},
    {{"add-friend-to-db", "", kFriends,
      "USER_UUID FRIEND_ID FRIEND_GUID FRIEND_DEVICE_NAME FRIEND_DEVICE_ADDRESS FRIEND_PEER_ID",
      "store a friend", "1 3 4 14 19"},
     Call<&Accounts::AddFriendToDB, kFriendUuid>},
    {{"add-friend-candidate", "invite", kFriends, "USER_UUID FRIEND_ID FRIEND_PEER_ID",
      "invite a friend: gives the code that the friend must present", "1 14"},
     Call<&Accounts::AddFriendCandidate, kFriendAuthCode>},
    {{"add-friend-request", "accept", kFriends,
      "FRIEND_ID FRIEND_AUTH_CODE CODE FRIEND_DEVICE_MODEL_ID FRIEND_DEVICE_NAME "
      "FRIEND_DEVICE_ADDRESS",
      "complete an invitation with the friend's codes", "1 3 4 6 10 14 15 16 19"},
     Call<&Accounts::AddFriendRequest, kFriendUuid>},
    {{"remove-friend-from-db", "", kFriends, "USER_UUID FRIEND_ID FRIEND_PEER_ID",
      "delete a stored friend", "1 3 4 8 19"},
     Call<&Accounts::RemoveFriendFromDB>},
    {{"remove-friend-request", "unfriend", kFriends, "USER_UUID FRIEND_ID FRIEND_PEER_ID",
      "remove a friend from the cloud and from the store", "1 3 4 6 8 9 16 19"},
     Call<&Accounts::RemoveFriendRequest>},
    {{"get-all-friends-uuid", "", kFriends, "USER_UUID", "list the UUIDs of a user's friends",
      "1 3 4"},
     Call<&Accounts::GetAllFriendsUUID, kFriendUuids>},
    {{"get-friend-information", "friend", kFriends, "FRIEND_UUID", "read all fields of a friend",
      "1 3 4 9"},
     Call<&Accounts::GetFriendInformation, kFriendId, kFriendName, kFriendGuid, kFriendDeviceName,
          kFriendDeviceAddress, kFriendPeerId>},
    {{"do-factory-reset", "", kGateway, "", "delete all users, friends and sessions", "1 3 4"},
     Call<&Accounts::DoFactoryReset>},
    {{"get-session-info", "session", kSessions, "SESSION_ID", "tell whose session it is", "1 2"},
     Call<&Accounts::GetSessionInfo, kUserId>},
    {{"check-session-validation", "check", kSessions, "SESSION_ID",
      "tell whether the session is open", "1 2"},
     Call<&Accounts::CheckSessionValidation>},
    {{"reset-count-for-session-maintenance", "keep", kSessions, "SESSION_ID",
      "keep a session alive", "1"},
     Call<&Accounts::ResetCountForSessionMaintenance>},
    {{"get-session-lifetime", "lifetime", kSessions, "",
      "tell how many minutes an idle session lives", "1"},
     Call<&Accounts::GetSessionLifetime, kLifetime>},
    {{"set-session-lifetime", "", kSessions, "LIFETIME",
      "change how many minutes an idle session lives", "1"},
     Call<&Accounts::SetSessionLifetime>},
    {{"get-network-setting-status", "", kGateway, "",
      "1 once the traversal servers were fetched, else 0", ""},
     CallGetNetworkSettingStatus},
    {{"get-nts-server-info-and-peer-id", "network", kGateway, "",
      "the traversal servers and this gateway's peer ID", "1"},
     Call<&Accounts::GetNTSServerInfoAndPeerID, kPresenceServer, kStunServer, kTurnServer,
          kConnectionPort, kDomain, kPeerId>},
    {{"parse-account-message", "message", kFriends, "MESSAGE",
      "handle a JSON message of another module", "1 3 4 5 8 14 19"},
     Call<&Accounts::ParseAccountMessage>},
    {{"refresh-access-token", "refresh", kUsers, "USER_ID", "renew a user's tokens", "1 19"},
     Call<&Accounts::RefreshAccessToken>},
};

}  // namespace

const std::vector<Operation>& Operations() { return kOperations; }

const Operation* FindOperation(const std::string& name) {
  auto found =
      std::find_if(kOperations.begin(), kOperations.end(), [&name](const Operation& operation) {
        return name == operation.name || (*operation.alias != '\0' && name == operation.alias);
      });
  return found == kOperations.end() ? nullptr : &*found;
}

}  // namespace gateway
