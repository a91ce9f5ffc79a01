// The account interface over the bus.
#ifndef QORN_CLIENT_SRC_REMOTE_ACCOUNTS_H_
#define QORN_CLIENT_SRC_REMOTE_ACCOUNTS_H_

#include <atomic>
#include <string>
#include <vector>

#include "client/src/remote.h"

namespace qorn {

// Where an output goes.
struct Output {
  Output(std::string* place) : text(place) {}                // NOLINT: stands for its place
  Output(int* place) : number(place) {}                      // NOLINT: stands for its place
  Output(std::vector<std::string>* place) : texts(place) {}  // NOLINT: stands for its place

  // False when the next value of the reply has another type.
  bool Read(sd_bus_message* reply) const;

  std::string* text = nullptr;
  int* number = nullptr;
  std::vector<std::string>* texts = nullptr;
};

// The text about this thread's latest call; "" when an operation answered it.
std::string& LastErrorOfThread();

// The code that the error stands for, kAccountFailure for those of the way, which are then this
// thread's last error.
AccountResult CodeOf(const Result& result);

class RemoteAccounts : public AccountManager {
 public:
  explicit RemoteAccounts(Remote* remote) : remote_(remote) {}

  AccountResult CreateUser(const std::string& user_id, const std::string& auth_code,
                           std::string* user_uuid) override;
  AccountResult CreateUserRequest(const std::string& first, const std::string& second) override;
  AccountResult GetUserCreationRequest(const std::string& first,
                                       const std::string& second) override;
  AccountResult RemoveUser(const std::string& user_id, const std::string& target_user_id) override;
  AccountResult RemoveUserRequest(const std::string& first, const std::string& second) override;
  AccountResult SearchUser(const std::string& first, const std::string& second) override;
  AccountResult GetUserUUIDFromUserID(const std::string& user_id, std::string* user_uuid) override;
  AccountResult GetFriendUUIDFromFriendIDAndFriendPeerID(const std::string& user_uuid,
                                                         const std::string& friend_id,
                                                         const std::string& friend_peer_id,
                                                         std::string* friend_uuid) override;
  AccountResult SignIn(const std::string& user_id, const std::string& auth_code,
                       std::string* user_uuid, std::string* session_id,
                       bool* connection_failed) override;
  AccountResult SignInAlt(const std::string& user_id, const std::string& password,
                          std::string* user_uuid, std::string* session_id) override;
  AccountResult SignOut(const std::string& session_id) override;
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
  AccountResult DoFactoryReset() override;
  AccountResult GetSessionInfo(const std::string& session_id, std::string* user_id) override;
  AccountResult CheckSessionValidation(const std::string& session_id) override;
  AccountResult ResetCountForSessionMaintenance(const std::string& session_id) override;
  AccountResult GetSessionLifetime(int* lifetime) override;
  AccountResult SetSessionLifetime(int lifetime) override;
  int GetNetworkSettingStatus() override;
  AccountResult GetNTSServerInfoAndPeerID(std::string* presence_server, std::string* stun_server,
                                          std::string* turn_server, std::string* connection_port,
                                          std::string* domain, std::string* peer_id) override;
  AccountResult ParseAccountMessage(const std::string& message) override;
  AccountResult RefreshAccessToken(const std::string& user_id) override;

 private:
  AccountResult Invoke(const char* name, std::vector<Argument> arguments,
                       const std::vector<Output>& outputs);
  // Leaves it empty for a caller who may not read tokens, and does not ask again.
  void ReadToken(const std::string& user_uuid, int type, std::string* token);

  Remote* const remote_;
  std::atomic<bool> may_read_tokens_{true};
};

}  // namespace qorn

#endif  // QORN_CLIENT_SRC_REMOTE_ACCOUNTS_H_
