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
// Threads: every operation may be called from any thread. Operations that use the cloud block
// until the exchange is over: five seconds at most for each connection, without a limit after that.
// A database that another process holds is waited for up to 5.5 seconds a statement, and other
// callers that need the database wait behind it.
//
// Arguments: byte strings that hold UTF-8. Inputs come first, then outputs. An output pointer is
// never null. Outputs are written on success only, except where an operation says otherwise;
// lists are appended to and never cleared. Values go into cloud requests as they are: a caller
// that takes them from a person refuses control characters itself. An output is none of the inputs.
//
// Errors: an operation answers 1 (kAccountSuccess) or the code of the step that failed. The codes
// that each can give are listed with it. When memory ends, one that answers a code answers 19
// (kAccountFailure), with its outputs unspecified.
// No exception leaves an operation. A write that fails while it runs (a full disk, a database that
// stays locked) is not reported: the operation answers 1 and the row is as it was. A read that
// fails while it runs finds no row: 5, 6, 8 or 9, or 1 with a shorter list.
//
// Binary contract: Itanium C++ ABI, libstdc++ with the new std::string (_GLIBCXX_USE_CXX11_ABI=1),
// built by the same major compiler as the caller. The order of the virtual operations, the result
// codes, the type codes and the event numbers are part of it; never renumber or reorder.
#ifndef QORN_CORE_FW_ACCOUNT_INCLUDE_ACCOUNT_MANAGER_H_
#define QORN_CORE_FW_ACCOUNT_INCLUDE_ACCOUNT_MANAGER_H_

#include <string>
#include <vector>

// What an operation answers: one of the constants below.
typedef int AccountResult;

// Part of the binary contract; never renumber. There is no code 0, and no operation
// answers a reserved one.
enum : AccountResult {
  kAccountSuccess = 1,                 // The operation did all that it does.
  kAccountInvalidSessionId = 2,        // No session with this ID is open.
  kAccountDbConnectFailure = 3,        // The database was not opened at the start.
  kAccountDbExecuteFailure = 4,        // A statement cannot be prepared.
  kAccountNoUserWithUserId = 5,        // No user with this ID is stored.
  kAccountNoUserWithUserUuid = 6,      // No user with this UUID is stored.
  kAccountUserGuidMismatch = 7,        // The code belongs to another account.
  kAccountNoFriendWithFriendId = 8,    // The user has no such friend.
  kAccountNoFriendWithFriendUuid = 9,  // No friend with this UUID is stored.
  kAccountInvalidFriendAuthCode = 10,  // No invitation has this code.
  kAccountNoUser = 11,                 // Reserved.
  kAccountDuplicatedUserId = 12,       // A user with this ID is stored already.
  kAccountDuplicatedUserGuid = 13,     // A user of the same cloud account is stored already.
  kAccountDuplicatedFriendId = 14,     // The user has a friend with this ID already.
  kAccountZepServerFailure = 15,       // The account server gave no tokens.
  kAccountUserPortalFailure = 16,      // The User Portal did not do what it was asked for.
  kAccountInternalServerError = 17,    // Reserved.
  kAccountRemoteAccessFailure = 18,    // Reserved.
  kAccountFailure = 19,                // Anything else; each operation says what.
};

// Events on the platform's bus: the number, and the strings of the payload in order.
// Part of the binary contract; never renumber.
enum : int {
  kEventAccountAddFriend = 1,           // user UUID, friend UUID, friend ID, friend peer ID
  kEventAccountCreateUser = 2,          // user UUID, user ID, authorisation code
  kEventAccountRemoveFriend = 3,        // user UUID, friend ID, friend peer ID
  kEventAccountRemoveUser = 4,          // removed user's UUID, removed user's ID, ID of who asked
  kEventAccountSetUserInformation = 5,  // user UUID, user ID, user name
  kEventAccountSignIn = 6,              // user UUID, user ID, authorisation code, session ID
  kEventAccountSignInAlt = 7,           // user UUID, user ID, session ID
  kEventAccountSignOut = 8,             // user UUID, user ID, session ID
};

// What GetUserInfoByType reads (100 to 108) and SetUserInfoByType changes (200, 201).
// Part of the binary contract; never renumber.
enum UserInfoType : int {
  kUserInfoGetUserId = 100,               // the ID, as it is now
  kUserInfoGetUserName = 101,             // the display name
  kUserInfoGetSignInState = 102,          // "On" while the user has a session, else "Off"
  kUserInfoGetUserGuid = 103,             // the account server's identifier of the user
  kUserInfoGetAccessToken = 104,          // a secret
  kUserInfoGetRefreshToken = 105,         // a secret
  kUserInfoGetRegisteredDate = 106,       // the dates read as 2013/11/11 Monday 8:0:0, local time
  kUserInfoGetLastSignInDate = 107,       // of either kind of sign-in
  kUserInfoGetLastInfoChangedDate = 108,  // of the ID or the name
  kUserInfoSetUserId = 200,               // open sessions follow
  kUserInfoSetUserName = 201,             // the display name
};

// The interface "account_interface": 32 operations in the order of the binary contract.
class AccountManager {
 public:
  // Exchanges the authorisation code for tokens, registers the user with the User Portal and
  // stores it. Publishes kEventAccountCreateUser.
  // 1, 3, 4, 12, 13, 15, 16; 19 when the bus gave no event. The portal's registration stays with 3,
  // 4, 12 and 13. The user is stored, and `user_uuid`
  // written, with that 19 too, and with a 3 or 4 of the list that is read afterwards.
  virtual AccountResult CreateUser(const std::string& user_id, const std::string& auth_code,
                                   std::string* user_uuid) = 0;

  // A place for a request between users, like three more below: does nothing and always answers 1.
  virtual AccountResult CreateUserRequest(const std::string& first, const std::string& second) = 0;
  // Like CreateUserRequest.
  virtual AccountResult GetUserCreationRequest(const std::string& first,
                                               const std::string& second) = 0;

  // Removes `target_user_id` at the User Portal, then its row, then its friends; `user_id` is the
  // user who asks, whose token authorises it. Publishes kEventAccountRemoveUser. Sessions of the
  // removed user stay open until they are signed out or idle.
  // 1, 3, 4, 5, 6, 16 (nothing removed here); 3 or 4 may also come after the row went, and 19 when
  // the bus gave no event (the user is gone).
  virtual AccountResult RemoveUser(const std::string& user_id,
                                   const std::string& target_user_id) = 0;

  // Like CreateUserRequest.
  virtual AccountResult RemoveUserRequest(const std::string& first, const std::string& second) = 0;
  // Like CreateUserRequest.
  virtual AccountResult SearchUser(const std::string& first, const std::string& second) = 0;

  // Looks a user up. 1, 3, 4, 5. "qornsystem", the system account, is its own UUID and needs no
  // database.
  virtual AccountResult GetUserUUIDFromUserID(const std::string& user_id,
                                              std::string* user_uuid) = 0;

  // Looks a friend up. 1, 3, 4; 8 when the user has no friend with this ID and peer ID.
  virtual AccountResult GetFriendUUIDFromFriendIDAndFriendPeerID(const std::string& user_uuid,
                                                                 const std::string& friend_id,
                                                                 const std::string& friend_peer_id,
                                                                 std::string* friend_uuid) = 0;

  // Signs a cloud user in with an authorisation code and opens a session. Publishes
  // kEventAccountSignIn.
  // 1, 3, 4, 5, 15; 7 when the code belongs to another account; 19 when the bus gave no event (the
  // session is open, both IDs are written). `connection_failed` is written with 15 only: true when
  // no complete answer came, false when one came that gives no tokens.
  virtual AccountResult SignIn(const std::string& user_id, const std::string& auth_code,
                               std::string* user_uuid, std::string* session_id,
                               bool* connection_failed) = 0;

  // Signs a user in without the cloud and opens a session. A stored user needs no password: it is
  // not looked at. The system account needs its fixed one. Publishes kEventAccountSignInAlt.
  // 1, 3, 4, 5; 19 for a wrong password of the system account (no session), or when the bus gave
  // no event (the session is open, both IDs are written).
  virtual AccountResult SignInAlt(const std::string& user_id, const std::string& password,
                                  std::string* user_uuid, std::string* session_id) = 0;

  // Closes a session. Publishes kEventAccountSignOut, as the worker thread does for an idle one.
  // 1; 2 for an unknown session; 3, 4, 5 when its user cannot be looked up and 19 when the bus gave
  // no event: the session is closed in these cases too.
  virtual AccountResult SignOut(const std::string& session_id) = 0;

  // Appends the UUIDs of all users, the system account last; with session mode off the value of
  // "account_default_value" follows. 1, 3, 4.
  virtual AccountResult GetAllUsersUUID(std::vector<std::string>* user_uuids) = 0;

  // Reads one item of a user. 1, 3, 4, 6; 2 when a session ended while the sign-in state was read.
  // A `type` that is none of 100 to 108 answers 1 and leaves `value` alone; that is deliberate.
  virtual AccountResult GetUserInfoByType(const std::string& user_uuid, int type,
                                          std::string* value) = 0;

  // Changes the user ID (200: open sessions follow; two users may then share an ID, and a look-up
  // by ID answers one of them) or the user name (201). Publishes kEventAccountSetUserInformation.
  // Two things are deliberate: any other `type` rewrites the unchanged row and publishes; and the
  // dates that a call does not set are stored as they are shown, after which they read as a moment
  // in 1970.
  // The system account has no row: it stays as it is, and 200 takes its sessions to an ID that is
  // nobody's.
  // 1, 3, 4, 6; 2 when a session ended meanwhile; 19 when the bus gave no event (the row is
  // written). With 2, 3 and 4 the row is unchanged, while sessions may follow the new ID already.
  virtual AccountResult SetUserInfoByType(const std::string& user_uuid, int type,
                                          const std::string& value) = 0;

  // Reads all of a user. 1, 3, 4, 6; 2 when a session ended meanwhile: ID, name and "Off" are then
  // written already.
  virtual AccountResult GetUserInformation(const std::string& user_uuid, std::string* user_id,
                                           std::string* user_name, std::string* sign_in_state,
                                           std::string* user_guid, std::string* access_token,
                                           std::string* refresh_token, std::string* registered_date,
                                           std::string* last_sign_in_date,
                                           std::string* last_info_changed_date) = 0;

  // Stores a friend of the user. Publishes kEventAccountAddFriend.
  // 1, 3, 4; 14 when the user has a friend with this ID, at whatever gateway; 19 when the bus gave
  // no event (the friend is stored, `friend_uuid` is written).
  virtual AccountResult AddFriendToDB(const std::string& user_uuid, const std::string& friend_id,
                                      const std::string& friend_guid,
                                      const std::string& friend_device_name,
                                      const std::string& friend_device_physical_address_text,
                                      const std::string& friend_peer_id,
                                      std::string* friend_uuid) = 0;

  // Invites a friend: gives the friend auth code that the friend must present. It does not expire
  // before the component starts again, and works more than once.
  // 1; 14 when a friend with this ID and peer ID is stored already. A store that fails counts as
  // "not stored", and the user UUID is not looked at.
  virtual AccountResult AddFriendCandidate(const std::string& user_uuid,
                                           const std::string& friend_id,
                                           const std::string& friend_peer_id,
                                           std::string* friend_auth_code) = 0;

  // Completes an invitation with the friend's code and an authorisation code of the friend's own
  // account, registers both at the User Portal and stores the friend under `friend_id`.
  // Publishes kEventAccountAddFriend.
  // 1, 3, 4, 6, 14, 15, 16; 10 for an unknown friend auth code; 19 when the friend's peer ID is not
  // the invited one (nothing stored), or when the bus gave no event (stored, `friend_uuid`
  // written). Registrations at the portal that were made by then stay.
  virtual AccountResult AddFriendRequest(const std::string& friend_id,
                                         const std::string& friend_auth_code,
                                         const std::string& oauth_auth_code,
                                         const std::string& friend_device_model_id,
                                         const std::string& friend_device_name,
                                         const std::string& friend_device_physical_address_text,
                                         std::string* friend_uuid) = 0;

  // Deletes a friend's row. Publishes kEventAccountRemoveFriend.
  // 1, 3, 4, 8; 19 when the bus gave no event (the friend is gone).
  virtual AccountResult RemoveFriendFromDB(const std::string& user_uuid,
                                           const std::string& friend_id,
                                           const std::string& friend_peer_id) = 0;

  // Removes both registrations at the User Portal, then does what RemoveFriendFromDB does.
  // 1, 3, 4, 6, 8, 9; 16 (the friend stays, though the first registration may be gone); 19 when the
  // bus gave no event (the friend is gone).
  virtual AccountResult RemoveFriendRequest(const std::string& user_uuid,
                                            const std::string& friend_id,
                                            const std::string& friend_peer_id) = 0;

  // Appends the UUIDs of the user's friends. 1 (also for an unknown user), 3, 4.
  virtual AccountResult GetAllFriendsUUID(const std::string& user_uuid,
                                          std::vector<std::string>* friend_uuids) = 0;

  // Reads all of a friend. 1, 3, 4, 9.
  virtual AccountResult GetFriendInformation(const std::string& friend_uuid, std::string* friend_id,
                                             std::string* friend_name, std::string* friend_guid,
                                             std::string* friend_device_name,
                                             std::string* friend_device_physical_address_text,
                                             std::string* friend_peer_id) = 0;

  // Deletes all users and friends, then drops all sessions without an event. The cloud is not told,
  // and friend auth codes that were handed out stay known.
  // 1; 3 or 4 with all sessions kept, and with 4 what was deleted by then stays deleted.
  virtual AccountResult DoFactoryReset() = 0;

  // The user ID that a session belongs to. 1, 2.
  virtual AccountResult GetSessionInfo(const std::string& session_id, std::string* user_id) = 0;

  // 1 while the session is open, else 2.
  virtual AccountResult CheckSessionValidation(const std::string& session_id) = 0;

  // Keeps a session alive. Always 1, also for an unknown session.
  virtual AccountResult ResetCountForSessionMaintenance(const std::string& session_id) = 0;

  // How many ticks of 60 seconds a session lives without being kept alive: 30 at start. Always 1.
  virtual AccountResult GetSessionLifetime(int* lifetime) = 0;

  // Takes any value; zero and less end every session at the next tick. Not stored. Always 1.
  virtual AccountResult SetSessionLifetime(int lifetime) = 0;

  // 1 once the gateway's peer ID and traversal servers were fetched, else 0. Not a result code.
  virtual int GetNetworkSettingStatus() = 0;

  // The traversal servers and this gateway's peer ID; empty before they were fetched. Call it once
  // GetNetworkSettingStatus answered 1: before that another thread may be writing them. Always 1.
  virtual AccountResult GetNTSServerInfoAndPeerID(std::string* presence_server,
                                                  std::string* stun_server,
                                                  std::string* turn_server,
                                                  std::string* connection_port, std::string* domain,
                                                  std::string* peer_id) = 0;

  // Handles a JSON message of another module, "AddFriend" or "RemoveFriend", as AddFriendToDB and
  // RemoveFriendFromDB do, with their events.
  // 1, 3, 4, 5, 8, 14; 19 for anything that is not such a message, and when the bus gave no event.
  virtual AccountResult ParseAccountMessage(const std::string& message) = 0;

  // Renews a user's tokens with the stored refresh token. 1, 19. An unknown user asks with an empty
  // token; a store that fails is not reported.
  virtual AccountResult RefreshAccessToken(const std::string& user_id) = 0;

  // Not for callers: the service belongs to the library.
  virtual ~AccountManager() = default;
};

#endif  // QORN_CORE_FW_ACCOUNT_INCLUDE_ACCOUNT_MANAGER_H_
