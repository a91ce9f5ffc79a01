// The account flows of AccountController: cloud and store combined into whole steps.
#include <string>
#include <vector>

#include "base/location.h"
#include "core_fw/account/src/account_controller.h"
#include "core_fw/account/src/account_log.h"
#include "core_fw/account/src/account_result.h"
#include "core_fw/account/src/dates.h"
#include "core_fw/account/src/identifiers.h"

namespace account {
namespace {

UserInfo MakeUser(const std::string& user_id, const Tokens& tokens) {
  UserInfo user;
  user.userUuid = MakeUuid(kUuidOfUser);
  user.userId = user_id;
  user.userName = NameFromId(user_id, "Default");
  user.userGuid = tokens.user_guid;
  user.accessToken = tokens.access_token;
  user.refreshToken = tokens.refresh_token;
  user.registeredDate = CurrentTimestamp();
  user.lastSignInDate = user.registeredDate;
  user.lastInfoChangedDate = user.registeredDate;
  return user;
}

void LogNetworkFailure(AccountResult result) {
  LogFailure(FROM_HERE, "InitNetworkSetting", AccountResultMessage(result));
}

}  // namespace

AccountResult AccountController::CreateAccount(const std::string& user_id,
                                               const std::string& auth_code,
                                               std::string* user_uuid) {
  Tokens tokens;
  HttpResult http_result = kHttpOtherStatus;
  if (!GetTokensByAuthCode(GetTokenSettings(), auth_code, &tokens, &http_result)) {
    return kAccountZepServerFailure;
  }
  const PortalIdentity identity{user_id, tokens.user_guid, tokens.access_token};
  if (!AddUserToUserPortal(GetPortalSettings(), identity, GetGatewayDevice(), service_,
                           &http_result)) {
    return kAccountUserPortalFailure;
  }
  const UserInfo user = MakeUser(user_id, tokens);
  AccountResult result = store_->AddUser(user);
  // Deliberate: the registration at the portal is not undone. Creating the user again repeats it.
  if (result != kAccountSuccess) return result;
  *user_uuid = user.userUuid;
  std::vector<std::string> user_uuids;
  result = store_->GetAllUsersUuidList(user_uuids);
  if (result != kAccountSuccess) return result;
  // Deliberate: the list ends with the system account, so with the new user it has two entries or
  // more, and the network setting is left to InitNetworkSetting. One entry means that the table was
  // empty and that the insert failed without being reported; then this thread fetches the setting.
  if (user_uuids.size() != 1) return kAccountSuccess;
  return FetchNetworkSetting(user) ? kAccountSuccess : kAccountUserPortalFailure;
}

AccountResult AccountController::SignInWithAuthCode(const std::string& user_id,
                                                    const std::string& auth_code,
                                                    std::string* user_uuid,
                                                    bool* connection_failed) {
  Tokens tokens;
  HttpResult http_result = kHttpOtherStatus;
  if (!GetTokensByAuthCode(GetTokenSettings(), auth_code, &tokens, &http_result)) {
    // The caller's next step depends on it: try again later, or get a new code.
    *connection_failed = http_result == kHttpTransportError;
    return kAccountZepServerFailure;
  }
  UserInfo user;
  AccountResult result = store_->GetUserByUserId(user_id, user);
  if (result != kAccountSuccess) return result;
  // The code proves who somebody is at the cloud. Without this check any cloud account could sign
  // in as any user of this gateway.
  if (tokens.user_guid != user.userGuid) return kAccountUserGuidMismatch;
  user.accessToken = tokens.access_token;
  user.refreshToken = tokens.refresh_token;
  user.lastSignInDate = CurrentTimestamp();
  result = store_->ModifyUser(user);
  if (result != kAccountSuccess) return result;
  *user_uuid = user.userUuid;
  return kAccountSuccess;
}

AccountResult AccountController::SignInLocalUser(const std::string& user_id,
                                                 std::string* user_uuid) {
  UserInfo user;
  AccountResult result = store_->GetUserByUserId(user_id, user);
  if (result != kAccountSuccess) return result;
  user.lastSignInDate = CurrentTimestamp();
  result = store_->ModifyUser(user);
  if (result != kAccountSuccess) return result;
  *user_uuid = user.userUuid;
  return kAccountSuccess;
}

AccountResult AccountController::SignOutLocalUser(const std::string&) { return kAccountSuccess; }

AccountResult AccountController::RemoveAccount(const std::string& user_id,
                                               const std::string& target_user_id) {
  std::string user_uuid;
  AccountResult result = store_->GetUserUUIDFromUserID(user_id, user_uuid);
  if (result != kAccountSuccess) return result;
  std::string target_uuid;
  result = store_->GetUserUUIDFromUserID(target_user_id, target_uuid);
  if (result != kAccountSuccess) return result;
  UserInfo user;
  result = GetUserInfo(user_uuid, &user);
  if (result != kAccountSuccess) return result;
  UserInfo target;
  result = GetUserInfo(target_uuid, &target);
  if (result != kAccountSuccess) return result;

  HttpResult http_result = kHttpOtherStatus;
  if (!DeleteUserFromUserPortal(GetPortalSettings(), {user.userId, user.userGuid, user.accessToken},
                                target.userGuid, device_physical_address_text_, service_,
                                &http_result)) {
    return kAccountUserPortalFailure;
  }
  // The cloud goes first: if it refuses, nothing is removed here and the removal can be repeated.
  result = store_->RemoveUser(target_uuid);
  if (result != kAccountSuccess) return result;
  std::vector<std::string> friend_uuids;
  result = store_->GetAllFriendsUuidList(target_uuid, friend_uuids);
  if (result != kAccountSuccess) return result;
  for (const std::string& friend_uuid : friend_uuids) {
    result = store_->RemoveFriend(friend_uuid);
    if (result != kAccountSuccess) return result;
  }
  return kAccountSuccess;
}

AccountResult AccountController::RefreshAccessToken(const std::string& user_id) {
  UserInfo user;
  // Deliberately unchecked, like the write below: for an unknown user the request goes out with an
  // empty refresh token, and the server refuses it.
  store_->GetUserByUserId(user_id, user);
  Tokens tokens;
  if (!GetTokensByRefreshToken(GetTokenSettings(), user.refreshToken, &tokens)) {
    return kAccountFailure;
  }
  user.accessToken = tokens.access_token;
  user.refreshToken = tokens.refresh_token;
  store_->ModifyUser(user);
  return kAccountSuccess;
}

AccountResult AccountController::GetUserInfo(const std::string& user_uuid, UserInfo* user) {
  const AccountResult result = store_->GetUserByUserUuid(user_uuid, *user);
  if (result != kAccountSuccess) return result;
  user->registeredDate = FormatDate(user->registeredDate);
  user->lastSignInDate = FormatDate(user->lastSignInDate);
  user->lastInfoChangedDate = FormatDate(user->lastInfoChangedDate);
  return kAccountSuccess;
}

// Writes straight into the six strings: what a partial answer holds is kept for readers, and the
// next attempt overwrites it.
bool AccountController::FetchNetworkSetting(const UserInfo& user) {
  const PortalSettings settings = GetPortalSettings();
  const PortalIdentity identity{user.userId, user.userGuid, user.accessToken};
  HttpResult http_result = kHttpOtherStatus;
  return GetPeerIDFromUserPortal(settings, identity, device_type_code_, &peer_id_, &http_result) &&
         GetNTSServerInfoFromUserPortal(
             settings, identity, server_type_,
             {&presence_server_, &stun_server_, &turn_server_, &conn_port_, &domain_},
             &http_result);
}

void AccountController::InitNetworkSetting() {
  if (!network_setting_enabled_ || GetNetworkSettingStatus() == 1) return;
  std::vector<std::string> user_uuids;
  AccountResult result = store_->GetAllUsersUuidList(user_uuids);
  if (result != kAccountSuccess) return LogNetworkFailure(result);
  // Deliberate, though the list is never empty: it ends with the system account.
  if (user_uuids.empty()) return;
  UserInfo system;
  result = store_->GetSystemAccount(system);
  if (result != kAccountSuccess) return LogNetworkFailure(result);
  // As the system account, so that a gateway without users can be reached, too.
  if (!FetchNetworkSetting(system)) return LogNetworkFailure(kAccountUserPortalFailure);
  // Last, with release order: whoever reads 1 with acquire order sees the six strings complete.
  network_setting_initialized_.store(1, std::memory_order_release);
}

}  // namespace account
