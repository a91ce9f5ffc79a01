#ifndef QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_CONTROLLER_H_
#define QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_CONTROLLER_H_

#include <atomic>
#include <string>
#include <vector>

#include "base/lock.h"
#include "base/thread_annotations.h"
#include "core_fw/account/include/account_manager.h"
#include "core_fw/account/src/account_db_wrapper.h"
#include "core_fw/account/src/account_records.h"
#include "core_fw/account/src/friend_candidates.h"
#include "core_fw/account/src/oauth_token_client.h"
#include "core_fw/account/src/user_portal_client.h"

namespace account {

// The business layer: configuration, cloud and store combined into whole steps.
//
// Any thread once Init has returned. The configuration does not change after that, and the store
// has a lock of its own; lock_ guards the candidates and is never held while calling out.
//
// The six network strings have no lock. The worker thread writes them in InitNetworkSetting and
// then sets the status to 1: read them only after that. In one rare case a caller's thread writes
// them, too: CreateAccount does if its insert into an empty table failed without being reported.
class AccountController {
 public:
  AccountController() = default;
  ~AccountController();  // Closes the store.
  AccountController(const AccountController&) = delete;
  AccountController& operator=(const AccountController&) = delete;

  // The library's one controller, made and initialised on first use.
  static AccountController* GetInstance();
  static void DestroyInstance();

  // Drops the candidates, opens the store and reads the configuration. False, logged, at the first
  // key that is missing or empty; the keys after it are not read. A store that does not open does
  // not stop Init: every operation on it reports the failure.
  bool Init();

  // Account flows. Results of the store are returned unchanged.
  AccountResult CreateAccount(const std::string& user_id, const std::string& auth_code,
                              std::string* user_uuid);
  // `connection_failed` is written with 15 only.
  AccountResult SignInWithAuthCode(const std::string& user_id, const std::string& auth_code,
                                   std::string* user_uuid, bool* connection_failed);
  AccountResult SignInLocalUser(const std::string& user_id, std::string* user_uuid);
  AccountResult SignOutLocalUser(const std::string& user_id);
  AccountResult RemoveAccount(const std::string& user_id, const std::string& target_user_id);
  // 1 or 19.
  AccountResult RefreshAccessToken(const std::string& user_id);
  // The three dates are in the form in which they are shown, not in the stored form.
  AccountResult GetUserInfo(const std::string& user_uuid, UserInfo* user);

  // Placeholders for requests between users: always 1.
  AccountResult CreateUserRequest(const std::string& first, const std::string& second);
  AccountResult GetUserCreationRequest(const std::string& first, const std::string& second);
  AccountResult RemoveUserRequest(const std::string& first, const std::string& second);
  AccountResult SearchUser(const std::string& first, const std::string& second);

  // Fetches peer ID and traversal servers, if enabled and not yet done. Worker thread only.
  void InitNetworkSetting();
  int GetNetworkSettingStatus() const;
  AccountResult GetNTSServerInfoAndPeerID(std::string* presence_server, std::string* stun_server,
                                          std::string* turn_server, std::string* connection_port,
                                          std::string* domain, std::string* peer_id) const;

  // Friends.
  AccountResult AddFriendCandidate(const std::string& user_uuid, const std::string& friend_id,
                                   const std::string& friend_peer_id, std::string* auth_code);
  AccountResult SendAddFriendMessage(const std::string& friend_id, const std::string& auth_code,
                                     const std::string& oauth_auth_code,
                                     const std::string& friend_device_model_id,
                                     const std::string& friend_device_physical_address_text,
                                     std::string* friend_guid, std::string* user_uuid,
                                     std::string* friend_peer_id);
  AccountResult SendRemoveFriendMessage(const std::string& user_uuid, const std::string& friend_id,
                                        const std::string& friend_peer_id);
  // Makes the friend's UUID and name itself; only the other fields of `friend_info` are read.
  AccountResult AddFriendToStore(const std::string& user_uuid, FriendInfo friend_info,
                                 std::string* friend_uuid);
  AccountResult RemoveFriendFromStore(const std::string& user_uuid, const std::string& friend_id,
                                      const std::string& friend_peer_id);

  // The store's operations of the same names.
  AccountResult GetUserUUIDFromUserID(const std::string& user_id, std::string* user_uuid);
  AccountResult GetFriendUUIDFromFriendIDAndFriendPeerID(const std::string& user_uuid,
                                                         const std::string& friend_id,
                                                         const std::string& friend_peer_id,
                                                         std::string* friend_uuid);
  AccountResult GetAllUsersUuidList(std::vector<std::string>* user_uuids);
  AccountResult ModifyUser(const UserInfo& user);
  AccountResult GetAllFriendsUuidList(const std::string& user_uuid,
                                      std::vector<std::string>* friend_uuids);
  AccountResult GetFriend(const std::string& friend_uuid, FriendInfo* friend_info);
  AccountResult DeleteAll();

 private:
  bool ReadMandatoryOptions();
  void ReadNetworkOption();
  TokenSettings GetTokenSettings() const;
  PortalSettings GetPortalSettings() const;
  PortalDevice GetGatewayDevice() const;
  // Makes the two requests of the network setting on behalf of an account and writes the six
  // strings.
  bool FetchNetworkSetting(const UserInfo& user);
  // The last candidate with this code; false if there is none.
  bool FindCandidate(const std::string& auth_code, FriendCandidate* candidate);

  AccountDBWrapper* store_ = nullptr;  // The library's one store.
  FriendCandidates friend_candidates_ GUARDED_BY(lock_);
  base::Lock lock_;
  std::string app_name_;
  std::string app_id_;
  std::string app_secret_;
  std::string device_type_code_;
  std::string device_model_id_;
  std::string device_physical_address_text_;
  std::string service_;
  std::string server_type_;
  std::string auth_url_;
  std::string user_portal_url_;
  std::string peer_id_;
  std::string presence_server_;
  std::string stun_server_;
  std::string turn_server_;
  std::string conn_port_;
  std::string domain_;
  std::string device_name_;
  std::atomic<int> network_setting_initialized_{0};
  bool network_setting_enabled_ = false;
};

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_CONTROLLER_H_
