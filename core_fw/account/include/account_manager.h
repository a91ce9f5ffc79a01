// The account service of the gateway: users, sign-in, sessions, friends.
//
// Another component asks the runtime for it by name and calls it directly:
//
//   void* found = nullptr;
//   if (runtime::Runtime::GetInstance()->QueryInterface("account_interface", &found)) {
//     AccountManager* accounts = static_cast<AccountManager*>(found);
//   }
//
// Ownership: the service belongs to the library. Callers never delete it, and stop calling it
// before the component is finalised.
//
// Threads: every operation may be called from any thread. An operation that uses the cloud blocks
// until the exchange is over: connecting takes five seconds at most, and the rest has no limit. If
// another process holds the database, each statement waits up to 5.5 seconds, and so do all other
// callers that need the database.
//
// Arguments: byte strings that hold UTF-8. Inputs come first, then outputs. An output pointer must
// not be null and must not point to an input. Outputs are written on success only, except where an
// operation says otherwise; lists are appended to and never cleared. Values go into cloud requests
// verbatim: a caller that takes them from a person must refuse control characters itself.
//
// Errors: an operation returns 1 (kAccountSuccess) or the code of the step that failed. The
// possible codes are listed with each operation. If an allocation fails, the operation returns 19
// (kAccountFailure), and its outputs are unspecified. No exception leaves an operation.
//
// A write that fails while it runs (a full disk, a database that stays locked) is not reported: the
// operation returns 1 and the row is unchanged. A read that fails while it runs finds no row: 5, 6,
// 8 or 9, or 1 with a shorter list.
//
// Binary contract: Itanium C++ ABI, libstdc++ with the new std::string (_GLIBCXX_USE_CXX11_ABI=1),
// built by the same major compiler as the caller. The order of the virtual operations, the result
// codes, the type codes and the event numbers are part of it; never renumber or reorder.
#ifndef QORN_CORE_FW_ACCOUNT_INCLUDE_ACCOUNT_MANAGER_H_
#define QORN_CORE_FW_ACCOUNT_INCLUDE_ACCOUNT_MANAGER_H_

#include <string>
#include <vector>

// What an operation returns: one of the constants below.
typedef int AccountResult;

// Part of the binary contract; never renumber. There is no code 0, and no operation
// returns a reserved one.
enum : AccountResult {
  kAccountSuccess = 1,                 // The operation did everything that it is for.
  kAccountInvalidSessionId = 2,        // No session with this ID is open.
  kAccountDbConnectFailure = 3,        // The database could not be opened at start-up.
  kAccountDbExecuteFailure = 4,        // A statement cannot be prepared.
  kAccountNoUserWithUserId = 5,        // No user with this ID is stored.
  kAccountNoUserWithUserUuid = 6,      // No user with this UUID is stored.
  kAccountUserGuidMismatch = 7,        // The code belongs to another account.
  kAccountNoFriendWithFriendId = 8,    // The user has no such friend.
  kAccountNoFriendWithFriendUuid = 9,  // No friend with this UUID is stored.
  kAccountInvalidFriendAuthCode = 10,  // No invitation has this code.
  kAccountNoUser = 11,                 // Reserved.
  kAccountDuplicatedUserId = 12,       // A user with this ID is already stored.
  kAccountDuplicatedUserGuid = 13,     // A user of the same cloud account is already stored.
  kAccountDuplicatedFriendId = 14,     // The user already has a friend with this ID.
  kAccountZepServerFailure = 15,       // The account server issued no tokens.
  kAccountUserPortalFailure = 16,      // A request to the User Portal failed or was refused.
  kAccountInternalServerError = 17,    // Reserved.
  kAccountRemoteAccessFailure = 18,    // Reserved.
  kAccountFailure = 19,                // Any other failure; each operation says which.
};

// Events on the platform's bus: the number, and the strings of the payload in order.
// Part of the binary contract; never renumber.
enum : int {
  kEventAccountAddFriend = 1,           // user UUID, friend UUID, friend ID, friend peer ID
  kEventAccountCreateUser = 2,          // user UUID, user ID, authorisation code
  kEventAccountRemoveFriend = 3,        // user UUID, friend ID, friend peer ID
  kEventAccountRemoveUser = 4,          // removed user's UUID, removed user's ID, acting user's ID
  kEventAccountSetUserInformation = 5,  // user UUID, user ID, user name
  kEventAccountSignIn = 6,              // user UUID, user ID, authorisation code, session ID
  kEventAccountSignInAlt = 7,           // user UUID, user ID, session ID
  kEventAccountSignOut = 8,             // user UUID, user ID, session ID
};

// What GetUserInfoByType reads (100 to 108) and SetUserInfoByType changes (200, 201).
// Part of the binary contract; never renumber.
enum UserInfoType : int {
  kUserInfoGetUserId = 100,               // the current ID
  kUserInfoGetUserName = 101,             // the display name
  kUserInfoGetSignInState = 102,          // "On" while the user has a session, else "Off"
  kUserInfoGetUserGuid = 103,             // the account server's identifier of the user
  kUserInfoGetAccessToken = 104,          // a secret
  kUserInfoGetRefreshToken = 105,         // a secret
  kUserInfoGetRegisteredDate = 106,       // dates are local time: 2013/11/11 Monday 8:0:0
  kUserInfoGetLastSignInDate = 107,       // of either kind of sign-in
  kUserInfoGetLastInfoChangedDate = 108,  // when the ID or the name was last changed
  kUserInfoSetUserId = 200,               // open sessions move to the new ID
  kUserInfoSetUserName = 201,             // the display name
};

// The interface "account_interface": 32 operations in the order of the binary contract.
class AccountManager {
 public:
  // Exchanges the authorisation code for tokens, registers the user with the User Portal and
  // stores it. Publishes kEventAccountCreateUser.
  // 1, 3, 4, 12, 13, 15, 16; 19 if the event cannot be created. With 3, 4, 12 and 13 the
  // registration at the portal is not undone. With that 19, and with a 3 or 4 from the list of
  // users that is read at the end, the user is stored and `user_uuid` is written.
  virtual AccountResult CreateUser(const std::string& user_id, const std::string& auth_code,
                                   std::string* user_uuid) = 0;

  // A placeholder for a request between users, like three more below: does nothing, always returns
  // 1.
  virtual AccountResult CreateUserRequest(const std::string& first, const std::string& second) = 0;
  // Like CreateUserRequest.
  virtual AccountResult GetUserCreationRequest(const std::string& first,
                                               const std::string& second) = 0;

  // Removes `target_user_id` at the User Portal, then its row, then its friends; `user_id` is the
  // acting user, whose token authorises the removal. Publishes kEventAccountRemoveUser. Sessions of
  // the removed user stay open until they are signed out or expire.
  // 1, 3, 4, 5, 6; 16 (nothing is removed from the database). 3 or 4 may also mean that the row is
  // gone and some friends are left; 19 if the event cannot be created (the user is removed).
  virtual AccountResult RemoveUser(const std::string& user_id,
                                   const std::string& target_user_id) = 0;

  // Like CreateUserRequest.
  virtual AccountResult RemoveUserRequest(const std::string& first, const std::string& second) = 0;
  // Like CreateUserRequest.
  virtual AccountResult SearchUser(const std::string& first, const std::string& second) = 0;

  // Looks a user up. 1, 3, 4, 5. For the system account, "qornsystem", ID and UUID are the same and
  // no database is needed.
  virtual AccountResult GetUserUUIDFromUserID(const std::string& user_id,
                                              std::string* user_uuid) = 0;

  // Looks a friend up. 1, 3, 4; 8 if the user has no friend with this ID and peer ID.
  virtual AccountResult GetFriendUUIDFromFriendIDAndFriendPeerID(const std::string& user_uuid,
                                                                 const std::string& friend_id,
                                                                 const std::string& friend_peer_id,
                                                                 std::string* friend_uuid) = 0;

  // Signs a cloud user in with an authorisation code and opens a session. Publishes
  // kEventAccountSignIn.
  // 1, 3, 4, 5, 15; 7 if the code belongs to another account; 19 if the event cannot be created
  // (the session is open, and both IDs are written). `connection_failed` is written with 15 only:
  // true if no complete response arrived, false if one arrived without tokens.
  virtual AccountResult SignIn(const std::string& user_id, const std::string& auth_code,
                               std::string* user_uuid, std::string* session_id,
                               bool* connection_failed) = 0;

  // Signs a user in without the cloud and opens a session. For a stored user the password is
  // ignored; the system account needs its fixed one. Publishes kEventAccountSignInAlt.
  // 1, 3, 4, 5; 19 if the system account's password is wrong (no session), or if the event cannot
  // be created (the session is open, and both IDs are written).
  virtual AccountResult SignInAlt(const std::string& user_id, const std::string& password,
                                  std::string* user_uuid, std::string* session_id) = 0;

  // Closes a session. Publishes kEventAccountSignOut, as the worker thread does for an expired one.
  // 1; 2 for an unknown session; 3, 4, 5 if its user cannot be looked up and 19 if the event cannot
  // be created: the session is closed in these cases, too.
  virtual AccountResult SignOut(const std::string& session_id) = 0;

  // Appends the UUIDs of all users, the system account's last; with session mode off, the value of
  // "account_default_value" follows. 1, 3, 4.
  virtual AccountResult GetAllUsersUUID(std::vector<std::string>* user_uuids) = 0;

  // Reads one item of a user. 1, 3, 4, 6; 2 if a session ended while the sign-in state was read.
  // Any `type` outside 100 to 108 returns 1 and leaves `value` untouched; that is deliberate.
  virtual AccountResult GetUserInfoByType(const std::string& user_uuid, int type,
                                          std::string* value) = 0;

  // Changes the user ID (200) or the user name (201). Publishes kEventAccountSetUserInformation.
  // Open sessions move to the new ID. Two users may then share an ID; a look-up by ID finds one of
  // them. Two things are deliberate: any other `type` rewrites the row unchanged and publishes, and
  // the dates that a call does not set are stored in the form in which they are shown, after which
  // they read as a moment in 1970.
  // The system account has no row and never changes, but 200 moves its sessions to an ID that
  // belongs to nobody.
  // 1, 3, 4, 6; 2 if a session ended meanwhile; 19 if the event cannot be created (the row is
  // written). With 2, 3 and 4 the row is unchanged, but sessions may already have the new ID.
  virtual AccountResult SetUserInfoByType(const std::string& user_uuid, int type,
                                          const std::string& value) = 0;

  // Reads every item of a user. 1, 3, 4, 6; 2 if a session ended meanwhile: ID, name and "Off" have
  // then been written.
  virtual AccountResult GetUserInformation(const std::string& user_uuid, std::string* user_id,
                                           std::string* user_name, std::string* sign_in_state,
                                           std::string* user_guid, std::string* access_token,
                                           std::string* refresh_token, std::string* registered_date,
                                           std::string* last_sign_in_date,
                                           std::string* last_info_changed_date) = 0;

  // Stores a friend of the user. Publishes kEventAccountAddFriend.
  // 1, 3, 4; 14 if the user has a friend with this ID, at any gateway; 19 if the event cannot be
  // created (the friend is stored, and `friend_uuid` is written).
  virtual AccountResult AddFriendToDB(const std::string& user_uuid, const std::string& friend_id,
                                      const std::string& friend_guid,
                                      const std::string& friend_device_name,
                                      const std::string& friend_device_physical_address_text,
                                      const std::string& friend_peer_id,
                                      std::string* friend_uuid) = 0;

  // Invites a friend: returns the friend auth code that the friend must present. The code is valid
  // until the component restarts, and works more than once.
  // 1; 14 if a friend with this ID and peer ID is already stored. A store failure counts as "not
  // stored", and the user UUID is not checked.
  virtual AccountResult AddFriendCandidate(const std::string& user_uuid,
                                           const std::string& friend_id,
                                           const std::string& friend_peer_id,
                                           std::string* friend_auth_code) = 0;

  // Completes an invitation with the friend's code and an authorisation code of the friend's own
  // account, registers both at the User Portal and stores the friend under `friend_id`.
  // Publishes kEventAccountAddFriend.
  // 1, 3, 4, 6, 14, 15, 16; 10 for an unknown friend auth code; 19 if the friend's peer ID is not
  // the invited one (nothing is stored), or if the event cannot be created (the friend is stored,
  // and `friend_uuid` is written). Registrations already made at the portal are not undone.
  virtual AccountResult AddFriendRequest(const std::string& friend_id,
                                         const std::string& friend_auth_code,
                                         const std::string& oauth_auth_code,
                                         const std::string& friend_device_model_id,
                                         const std::string& friend_device_name,
                                         const std::string& friend_device_physical_address_text,
                                         std::string* friend_uuid) = 0;

  // Deletes a friend's row. Publishes kEventAccountRemoveFriend.
  // 1, 3, 4, 8; 19 if the event cannot be created (the friend is removed).
  virtual AccountResult RemoveFriendFromDB(const std::string& user_uuid,
                                           const std::string& friend_id,
                                           const std::string& friend_peer_id) = 0;

  // Removes both registrations at the User Portal, then does what RemoveFriendFromDB does.
  // 1, 3, 4, 6, 8, 9; 16 (the friend stays, but the first registration may have been removed); 19
  // if the event cannot be created (the friend is removed).
  virtual AccountResult RemoveFriendRequest(const std::string& user_uuid,
                                            const std::string& friend_id,
                                            const std::string& friend_peer_id) = 0;

  // Appends the UUIDs of the user's friends. 1 (also for an unknown user), 3, 4.
  virtual AccountResult GetAllFriendsUUID(const std::string& user_uuid,
                                          std::vector<std::string>* friend_uuids) = 0;

  // Reads every item of a friend. 1, 3, 4, 9.
  virtual AccountResult GetFriendInformation(const std::string& friend_uuid, std::string* friend_id,
                                             std::string* friend_name, std::string* friend_guid,
                                             std::string* friend_device_name,
                                             std::string* friend_device_physical_address_text,
                                             std::string* friend_peer_id) = 0;

  // Deletes all users and friends, then closes all sessions without an event. The cloud is not
  // told, and friend auth codes stay valid.
  // 1; 3 or 4 with all sessions kept; with 4, what was already deleted stays deleted.
  virtual AccountResult DoFactoryReset() = 0;

  // The user ID that a session belongs to. 1, 2.
  virtual AccountResult GetSessionInfo(const std::string& session_id, std::string* user_id) = 0;

  // 1 while the session is open, else 2.
  virtual AccountResult CheckSessionValidation(const std::string& session_id) = 0;

  // Keeps a session alive. Always returns 1, even for an unknown session.
  virtual AccountResult ResetCountForSessionMaintenance(const std::string& session_id) = 0;

  // After how many ticks of 60 seconds an idle session expires; 30 at start-up. Always returns 1.
  virtual AccountResult GetSessionLifetime(int* lifetime) = 0;

  // Accepts any value; with zero or less every session expires at the next tick. Lost at a restart.
  // Always returns 1.
  virtual AccountResult SetSessionLifetime(int lifetime) = 0;

  // 1 once the gateway's peer ID and traversal servers have been fetched, else 0. Not a result
  // code.
  virtual int GetNetworkSettingStatus() = 0;

  // The traversal servers and this gateway's peer ID; empty until they have been fetched. Call it
  // only after GetNetworkSettingStatus has returned 1: until then another thread may be writing
  // them. Always returns 1.
  virtual AccountResult GetNTSServerInfoAndPeerID(std::string* presence_server,
                                                  std::string* stun_server,
                                                  std::string* turn_server,
                                                  std::string* connection_port, std::string* domain,
                                                  std::string* peer_id) = 0;

  // Handles a JSON message of another module, "AddFriend" or "RemoveFriend", as AddFriendToDB and
  // RemoveFriendFromDB do, with their events.
  // 1, 3, 4, 5, 8, 14; 19 for anything that is not such a message, and if the event cannot be
  // created.
  virtual AccountResult ParseAccountMessage(const std::string& message) = 0;

  // Renews a user's tokens with the stored refresh token. 1, 19. For an unknown user the request
  // goes out with an empty token; a store failure is not reported.
  virtual AccountResult RefreshAccessToken(const std::string& user_id) = 0;

  // Not for callers: the library owns the service.
  virtual ~AccountManager() = default;
};

#endif  // QORN_CORE_FW_ACCOUNT_INCLUDE_ACCOUNT_MANAGER_H_
