// The friend operations of AccountController: invitations, and what they change in cloud and store.
#include <string>
#include <utility>

#include "core_fw/account/src/account_controller.h"
#include "core_fw/account/src/account_message.h"
#include "core_fw/account/src/identifiers.h"

namespace account {

AccountResult AccountController::AddFriendCandidate(const std::string& user_uuid,
                                                    const std::string& friend_id,
                                                    const std::string& friend_peer_id,
                                                    std::string* auth_code) {
  std::string friend_uuid;
  // Deliberate: any other result, a store failure included, counts as "not yet a friend".
  if (store_->GetFriendUUIDFromFriendIDAndFriendPeerID(user_uuid, friend_id, friend_peer_id,
                                                       friend_uuid) == kAccountSuccess) {
    return kAccountDuplicatedFriendId;
  }
  FriendCandidate candidate{user_uuid, friend_id, friend_peer_id, MakeUuid(kUuidOfFriendAuthCode)};
  {  // Only for the list: the store above may wait for seconds.
    base::AutoLock hold(lock_);
    friend_candidates_.Add(candidate);
  }
  *auth_code = std::move(candidate.authCode);
  return kAccountSuccess;
}

bool AccountController::FindCandidate(const std::string& auth_code, FriendCandidate* candidate) {
  base::AutoLock hold(lock_);
  return friend_candidates_.Find(auth_code, candidate);
}

// The friend ID is deliberately unused: every request names the candidate's, which is the one that
// was invited.
AccountResult AccountController::SendAddFriendMessage(
    const std::string& /*friend_id*/, const std::string& auth_code,
    const std::string& oauth_auth_code, const std::string& friend_device_model_id,
    const std::string& friend_device_physical_address_text, std::string* friend_guid,
    std::string* user_uuid, std::string* friend_peer_id) {
  FriendCandidate candidate;
  if (!FindCandidate(auth_code, &candidate)) return kAccountInvalidFriendAuthCode;

  Tokens tokens;
  HttpResult http_result = kHttpOtherStatus;
  if (!GetTokensByAuthCode(GetTokenSettings(), oauth_auth_code, &tokens, &http_result)) {
    return kAccountZepServerFailure;
  }
  const PortalSettings settings = GetPortalSettings();
  const PortalIdentity friend_identity{candidate.friendId, tokens.user_guid, tokens.access_token};
  if (!AddUserToUserPortal(settings, friend_identity, GetGatewayDevice(), service_, &http_result)) {
    return kAccountUserPortalFailure;
  }
  std::string peer_id;
  if (!GetPeerIDFromUserPortal(settings, friend_identity, device_type_code_, &peer_id,
                               &http_result)) {
    return kAccountUserPortalFailure;
  }
  // The code was presented from another gateway than the invited one. The registration above is not
  // undone.
  if (peer_id != candidate.friendPeerId) return kAccountFailure;

  UserInfo user;
  const AccountResult result = store_->GetUserByUserUuid(candidate.userUuid, user);
  if (result != kAccountSuccess) return result;
  const PortalDevice friend_device{device_type_code_, friend_device_model_id,
                                   friend_device_physical_address_text};
  if (!AddUserToUserPortal(settings, {user.userId, user.userGuid, user.accessToken}, friend_device,
                           service_, &http_result)) {
    return kAccountUserPortalFailure;
  }
  *friend_guid = tokens.user_guid;
  *user_uuid = candidate.userUuid;
  *friend_peer_id = peer_id;
  // Until the status is 1, the worker thread may be writing this gateway's peer ID.
  const std::string own_peer_id = GetNetworkSettingStatus() == 1 ? peer_id_ : std::string();
  // Composed but not delivered: nothing carries messages to the remote-access module yet.
  ComposeAddFriendMessage({candidate.friendId, user.userId, user.userGuid, device_name_,
                           device_physical_address_text_, own_peer_id});
  return kAccountSuccess;
}

AccountResult AccountController::SendRemoveFriendMessage(const std::string& user_uuid,
                                                         const std::string& friend_id,
                                                         const std::string& friend_peer_id) {
  std::string friend_uuid;
  AccountResult result = store_->GetFriendUUIDFromFriendIDAndFriendPeerID(
      user_uuid, friend_id, friend_peer_id, friend_uuid);
  if (result != kAccountSuccess) return result;
  FriendInfo removed;
  result = store_->GetFriend(friend_uuid, removed);
  if (result != kAccountSuccess) return result;
  UserInfo user;
  result = store_->GetUserByUserUuid(user_uuid, user);
  if (result != kAccountSuccess) return result;

  const PortalSettings settings = GetPortalSettings();
  const PortalIdentity identity{user.userId, user.userGuid, user.accessToken};
  HttpResult http_result = kHttpOtherStatus;
  // The friend from this gateway first, then the user from the friend's: if the second request
  // fails, the friend has at least lost its registration here.
  if (!DeleteUserFromUserPortal(settings, identity, removed.friendGuid,
                                device_physical_address_text_, service_, &http_result)) {
    return kAccountUserPortalFailure;
  }
  if (!DeleteUserFromUserPortal(settings, identity, user.userGuid,
                                removed.friendQorDevicePhysicalAddressText, service_,
                                &http_result)) {
    return kAccountUserPortalFailure;
  }
  // Deliberately the friend's peer ID, whereas "AddFriend" carries this gateway's own.
  ComposeRemoveFriendMessage({removed.friendId, user.userId, "", "", "", friend_peer_id});
  return kAccountSuccess;
}

AccountResult AccountController::AddFriendToStore(const std::string& user_uuid,
                                                  FriendInfo friend_info,
                                                  std::string* friend_uuid) {
  friend_info.friendUuid = MakeUuid(kUuidOfFriend);
  friend_info.friendName = NameFromId(friend_info.friendId, "DefaultFriendName");
  const AccountResult result = store_->AddFriend(user_uuid, friend_info);
  if (result == kAccountSuccess) *friend_uuid = friend_info.friendUuid;
  return result;
}

AccountResult AccountController::RemoveFriendFromStore(const std::string& user_uuid,
                                                       const std::string& friend_id,
                                                       const std::string& friend_peer_id) {
  std::string friend_uuid;
  const AccountResult result = store_->GetFriendUUIDFromFriendIDAndFriendPeerID(
      user_uuid, friend_id, friend_peer_id, friend_uuid);
  return result == kAccountSuccess ? store_->RemoveFriend(friend_uuid) : result;
}

}  // namespace account
