#ifndef QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_MANAGER_IMPL_H_
#define QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_MANAGER_IMPL_H_

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "base/message_loop.h"
#include "base/simple_thread.h"
#include "base/timer.h"
#include "core_fw/account/include/account_manager.h"
#include "core_fw/account/src/account_controller.h"
#include "core_fw/account/src/account_message.h"
#include "core_fw/account/src/session_table.h"

namespace account {

// Fetches the network setting and ends idle sessions, once a minute. Worker thread only.
class AccountChecker {
 public:
  AccountChecker();
  AccountChecker(const AccountChecker&) = delete;
  AccountChecker& operator=(const AccountChecker&) = delete;

  // Takes all the memory that the timer needs: what it throws ends the worker's start, and nothing
  // after it can.
  void Prepare();
  // Tries the network setting and starts the timer: the first tick comes 60 seconds later.
  void StartRepeat();
  // One tick. The first failure is logged and ends it; the sessions behind wait for the next.
  void AddAndCheckCount();
  void StopRepeat();

 private:
  // Counts the tick for one session and signs it out if that was its last. False ends the tick.
  bool EndIfIdle(const std::string& session_id);
  // Logs and answers false.
  bool Fail(AccountResult result);

  AccountController* controller;
  SessionTable* sessionTable;
  base::Timer timer;
};

// The service's worker thread: runs the checker in a message loop. Run belongs to the thread
// itself, all else to the one that starts and ends the service.
class AccountCheckThread : public base::SimpleThread {
 public:
  AccountCheckThread();
  void Run() override;

  // Returns once the thread has its loop and timer. False when there was no memory for them: Run
  // is over then.
  bool WaitUntilPrepared();
  // Makes the thread leave its loop. Once, between WaitUntilPrepared and Join.
  static void ExitThread(AccountCheckThread* thread);

 private:
  enum class State { kStarting, kPrepared, kFailed };

  void SetState(State state);

  MessageLoop* messageLoop = nullptr;  // On the thread's own stack; read once it is prepared.
  std::atomic<State> state_{State::kStarting};
};

// The service behind the interface: traces, events and sessions around the controller's steps.
//
// Operations: any thread, between Init and Shutdown. Init and Shutdown: the runtime's thread. The
// service has no lock of its own, so the steps of an operation may interleave with those of another
// and with the worker thread's tick.
class AccountManagerImpl : public AccountManager {
 public:
  AccountManagerImpl();
  ~AccountManagerImpl() override;
  AccountManagerImpl(const AccountManagerImpl&) = delete;
  AccountManagerImpl& operator=(const AccountManagerImpl&) = delete;

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

  // account_manager_friends.cc
  AccountResult GetFriendUUIDFromFriendIDAndFriendPeerID(const std::string& user_uuid,
                                                         const std::string& friend_id,
                                                         const std::string& friend_peer_id,
                                                         std::string* friend_uuid) override;

  // account_manager_sign_in.cc
  AccountResult SignIn(const std::string& user_id, const std::string& auth_code,
                       std::string* user_uuid, std::string* session_id,
                       bool* connection_failed) override;
  AccountResult SignInAlt(const std::string& user_id, const std::string& password,
                          std::string* user_uuid, std::string* session_id) override;
  AccountResult SignOut(const std::string& session_id) override;

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

  // account_manager_friends.cc, account_manager_sign_in.cc
  AccountResult ParseAccountMessage(const std::string& message) noexcept override;
  AccountResult RefreshAccessToken(const std::string& user_id) override;

  // Two more virtual operations behind the interface's; the component shell calls them.
  // Init reads the session mode, makes controller and session table and starts the worker thread.
  // Once, or again after Shutdown; throws when memory or threads end.
  // Shutdown waits for the worker thread, a request that it is in included, and ends the two; safe
  // at any moment after Init, and again. Both always answer true.
  virtual bool Init();
  virtual bool Shutdown();

 private:
  // "On" while a session belongs to the user ID, else "Off". 2, output untouched, when a session
  // ends meanwhile.
  AccountResult ReadSignInState(const std::string& user_id, std::string* state);
  // Makes the sessions of one user ID belong to another. 2 when a session ends meanwhile; those
  // already moved stay.
  AccountResult RepointSessions(const std::string& user_id, const std::string& new_user_id);
  AccountResult HandleFriendMessage(MessageKind kind, const FriendMessage& message);

  AccountController* controller = nullptr;
  SessionTable* sessionTable = nullptr;
  std::unique_ptr<AccountCheckThread> checkThread;
  bool useSession = false;
};

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_MANAGER_IMPL_H_
