// The account service. This folder holds the component libqorn_account.so, in layers that call
// downwards only: the shell that the runtime loads (account_component), the service
// (account_manager_*, session_table), the controller (account_controller*), and beneath it the
// store (account_db_wrapper) and the cloud clients (oauth_token_client, user_portal_client).
#ifndef QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_MANAGER_IMPL_H_
#define QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_MANAGER_IMPL_H_

#include <memory>
#include <string>
#include <vector>

#include "core_fw/account/include/account_manager.h"
#include "core_fw/account/src/account_check_thread.h"
#include "core_fw/account/src/account_controller.h"
#include "core_fw/account/src/account_message.h"
#include "core_fw/account/src/session_table.h"

namespace account {

// The service behind the interface: log lines, events and sessions around the controller's steps.
//
// Operations may be called from any thread between Init and Shutdown, which belong to the runtime's
// thread. The service has no lock of its own, so the steps of one operation may interleave with
// those of another and with the worker thread's tick.
class AccountManagerImpl : public AccountManager {
 public:
  AccountManagerImpl();
  ~AccountManagerImpl() override;
  AccountManagerImpl(const AccountManagerImpl&) = delete;
  AccountManagerImpl& operator=(const AccountManagerImpl&) = delete;

  // The interface's operations, grouped by the file that holds them. Their places in the table of
  // virtual operations are those of account_manager.h, whatever the order here.

  // account_manager_users.cc
  AccountResult CreateUser(const std::string& user_id, const std::string& auth_code,
                           std::string* user_uuid) override;
  AccountResult CreateUserRequest(const std::string& first, const std::string& second) override;
  AccountResult GetUserCreationRequest(const std::string& first,
                                       const std::string& second) override;
  AccountResult RemoveUser(const std::string& user_id, const std::string& target_user_id) override;
  AccountResult RemoveUserRequest(const std::string& first, const std::string& second) override;
  AccountResult SearchUser(const std::string& first, const std::string& second) override;
  AccountResult GetUserUUIDFromUserID(const std::string& user_id, std::string* user_uuid) override;

  // account_manager_sign_in.cc
  AccountResult SignIn(const std::string& user_id, const std::string& auth_code,
                       std::string* user_uuid, std::string* session_id,
                       bool* connection_failed) override;
  AccountResult SignInAlt(const std::string& user_id, const std::string& password,
                          std::string* user_uuid, std::string* session_id) override;
  AccountResult SignOut(const std::string& session_id) override;
  AccountResult RefreshAccessToken(const std::string& user_id) override;

  // account_manager_user_info.cc
  AccountResult GetAllUsersUUID(std::vector<std::string>* user_uuids) override;
  AccountResult GetUserInfoByType(const std::string& user_uuid, int type,
                                  std::string* value) override;
  AccountResult SetUserInfoByType(const std::string& user_uuid, int type,
                                  const std::string& value) override;
  AccountResult GetUserInformation(const std::string& user_uuid, std::string* user_id,
                                   std::string* user_name, std::string* sign_in_state,
                                   std::string* user_guid, std::string* access_token,
                                   std::string* refresh_token, std::string* registered_date,
                                   std::string* last_sign_in_date,
                                   std::string* last_info_changed_date) override;

  // account_manager_friends.cc
  AccountResult GetFriendUUIDFromFriendIDAndFriendPeerID(const std::string& user_uuid,
                                                         const std::string& friend_id,
                                                         const std::string& friend_peer_id,
                                                         std::string* friend_uuid) override;
  AccountResult AddFriendToDB(const std::string& user_uuid, const std::string& friend_id,
                              const std::string& friend_guid, const std::string& friend_device_name,
                              const std::string& friend_device_physical_address_text,
                              const std::string& friend_peer_id, std::string* friend_uuid) override;
  AccountResult AddFriendCandidate(const std::string& user_uuid, const std::string& friend_id,
                                   const std::string& friend_peer_id,
                                   std::string* friend_auth_code) override;
  AccountResult AddFriendRequest(const std::string& friend_id, const std::string& friend_auth_code,
                                 const std::string& oauth_auth_code,
                                 const std::string& friend_device_model_id,
                                 const std::string& friend_device_name,
                                 const std::string& friend_device_physical_address_text,
                                 std::string* friend_uuid) override;
  AccountResult RemoveFriendFromDB(const std::string& user_uuid, const std::string& friend_id,
                                   const std::string& friend_peer_id) override;
  AccountResult RemoveFriendRequest(const std::string& user_uuid, const std::string& friend_id,
                                    const std::string& friend_peer_id) override;
  AccountResult GetAllFriendsUUID(const std::string& user_uuid,
                                  std::vector<std::string>* friend_uuids) override;
  AccountResult GetFriendInformation(const std::string& friend_uuid, std::string* friend_id,
                                     std::string* friend_name, std::string* friend_guid,
                                     std::string* friend_device_name,
                                     std::string* friend_device_physical_address_text,
                                     std::string* friend_peer_id) override;
  AccountResult ParseAccountMessage(const std::string& message) noexcept override;

  // account_manager_impl.cc
  AccountResult DoFactoryReset() override;
  AccountResult GetSessionInfo(const std::string& session_id, std::string* user_id) override;
  AccountResult CheckSessionValidation(const std::string& session_id) override;
  AccountResult ResetCountForSessionMaintenance(const std::string& session_id) override;
  AccountResult GetSessionLifetime(int* lifetime) override;
  AccountResult SetSessionLifetime(int lifetime) override;
  int GetNetworkSettingStatus() noexcept override;
  AccountResult GetNTSServerInfoAndPeerID(std::string* presence_server, std::string* stun_server,
                                          std::string* turn_server, std::string* connection_port,
                                          std::string* domain, std::string* peer_id) override;

  // Two more virtual operations, in the table behind the interface's; the component shell calls
  // them, and both always return true.
  //
  // Init reads the session mode, makes controller and session table and starts the worker thread.
  // Call it once, or again after Shutdown. Throws std::bad_alloc or std::system_error if there is
  // no memory or no thread.
  //
  // Shutdown joins the worker thread, and so waits for any request that it is making, then destroys
  // controller and session table. Safe at any moment after Init, and more than once.
  virtual bool Init();
  virtual bool Shutdown();

 private:
  // "On" while a session belongs to the user ID, else "Off". 2, with the output untouched, if a
  // session ends meanwhile.
  AccountResult ReadSignInState(const std::string& user_id, std::string* state);
  // Moves the sessions of one user ID to another. 2 if a session ends meanwhile; those already
  // moved stay moved.
  AccountResult RepointSessions(const std::string& user_id, const std::string& new_user_id);
  AccountResult HandleFriendMessage(MessageKind kind, const FriendMessage& message);

  AccountController* controller = nullptr;
  SessionTable* sessionTable = nullptr;
  std::unique_ptr<AccountCheckThread> checkThread;
  bool useSession = false;
};

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_MANAGER_IMPL_H_
