// The operations of AccountManagerImpl that read and change what is stored about users.
#include <cassert>
#include <string>
#include <utility>
#include <vector>

#include "base/location.h"
#include "core_fw/account/src/account_config.h"
#include "core_fw/account/src/account_event.h"
#include "core_fw/account/src/account_log.h"
#include "core_fw/account/src/account_manager_impl.h"
#include "core_fw/account/src/account_operation.h"
#include "core_fw/account/src/account_records.h"
#include "core_fw/account/src/dates.h"

namespace account {
namespace {

// The field that a type code reads; null for the sign-in state, which is not stored, and for
// unknown codes.
const std::string* FieldOfType(const UserInfo& user, int type) {
  switch (type) {
    case kUserInfoGetUserId:
      return &user.userId;
    case kUserInfoGetUserName:
      return &user.userName;
    case kUserInfoGetUserGuid:
      return &user.userGuid;
    case kUserInfoGetAccessToken:
      return &user.accessToken;
    case kUserInfoGetRefreshToken:
      return &user.refreshToken;
    case kUserInfoGetRegisteredDate:
      return &user.registeredDate;
    case kUserInfoGetLastSignInDate:
      return &user.lastSignInDate;
    case kUserInfoGetLastInfoChangedDate:
      return &user.lastInfoChangedDate;
    default:
      return nullptr;
  }
}

}  // namespace

AccountResult AccountManagerImpl::GetAllUsersUUID(std::vector<std::string>* user_uuids) {
  assert(user_uuids != nullptr);
  return RunOperation(FROM_HERE, "GetAllUsersUUID", [&] {
    const AccountResult result = controller->GetAllUsersUuidList(user_uuids);
    if (result != kAccountSuccess || useSession) return result;
    std::string default_user;
    if (ReadConfigOption("account_default_value", &default_user)) {
      LogProgress(FROM_HERE, "GetAllUsersUUID",
                  "Session Mode is OFF and default user uuid is added");
      user_uuids->push_back(default_user);
    }
    return result;
  });
}

AccountResult AccountManagerImpl::ReadSignInState(const std::string& user_id, std::string* state) {
  std::vector<std::string> session_ids;
  AccountResult result = sessionTable->GetAllSessionIds(&session_ids);
  if (result != kAccountSuccess) return result;
  // All sessions are read even after a match: one that ends meanwhile fails the operation wherever
  // it is in the table.
  bool signed_in = false;
  for (const std::string& session_id : session_ids) {
    std::string session_user;
    result = sessionTable->GetSessionUserId(session_id, &session_user);
    if (result != kAccountSuccess) return result;
    if (session_user == user_id) signed_in = true;
  }
  *state = signed_in ? "On" : "Off";
  return kAccountSuccess;
}

AccountResult AccountManagerImpl::GetUserInfoByType(const std::string& user_uuid, int type,
                                                    std::string* value) {
  assert(value != nullptr);
  return RunOperation(FROM_HERE, "GetUserInfoByType", [&]() -> AccountResult {
    UserInfo user;
    const AccountResult result = controller->GetUserInfo(user_uuid, &user);
    if (result != kAccountSuccess) return result;
    if (type == kUserInfoGetSignInState) return ReadSignInState(user.userId, value);
    // Deliberate: an unknown type succeeds and leaves the output untouched.
    const std::string* field = FieldOfType(user, type);
    if (field != nullptr) *value = *field;
    return kAccountSuccess;
  });
}

AccountResult AccountManagerImpl::GetUserInformation(
    const std::string& user_uuid, std::string* user_id, std::string* user_name,
    std::string* sign_in_state, std::string* user_guid, std::string* access_token,
    std::string* refresh_token, std::string* registered_date, std::string* last_sign_in_date,
    std::string* last_info_changed_date) {
  assert(user_id != nullptr && user_name != nullptr && sign_in_state != nullptr);
  assert(user_guid != nullptr && access_token != nullptr && refresh_token != nullptr);
  assert(registered_date != nullptr && last_sign_in_date != nullptr);
  assert(last_info_changed_date != nullptr);
  return RunOperation(FROM_HERE, "GetUserInformation", [&]() -> AccountResult {
    UserInfo user;
    AccountResult result = controller->GetUserInfo(user_uuid, &user);
    if (result != kAccountSuccess) return result;
    *user_id = user.userId;
    *user_name = std::move(user.userName);
    *sign_in_state = "Off";  // Stays "Off" if a session ends while the state is read.
    result = ReadSignInState(user.userId, sign_in_state);
    if (result != kAccountSuccess) return result;
    *user_guid = std::move(user.userGuid);
    *access_token = std::move(user.accessToken);
    *refresh_token = std::move(user.refreshToken);
    *registered_date = std::move(user.registeredDate);
    *last_sign_in_date = std::move(user.lastSignInDate);
    *last_info_changed_date = std::move(user.lastInfoChangedDate);
    return kAccountSuccess;
  });
}

AccountResult AccountManagerImpl::RepointSessions(const std::string& user_id,
                                                  const std::string& new_user_id) {
  std::vector<std::string> session_ids;
  AccountResult result = sessionTable->GetAllSessionIds(&session_ids);
  if (result != kAccountSuccess) return result;
  for (const std::string& session_id : session_ids) {
    std::string session_user;
    result = sessionTable->GetSessionUserId(session_id, &session_user);
    if (result != kAccountSuccess) return result;
    if (session_user != user_id) continue;
    result = sessionTable->SetSessionUserId(session_id, new_user_id);
    if (result != kAccountSuccess) return result;
  }
  return kAccountSuccess;
}

AccountResult AccountManagerImpl::SetUserInfoByType(const std::string& user_uuid, int type,
                                                    const std::string& value) {
  return RunOperation(FROM_HERE, "SetUserInfoByType", [&]() -> AccountResult {
    UserInfo user;
    AccountResult result = controller->GetUserInfo(user_uuid, &user);
    if (result != kAccountSuccess) return result;
    if (type == kUserInfoSetUserId) {
      // Before the row is written: a session that kept the old ID would belong to nobody.
      result = RepointSessions(user.userId, value);
      if (result != kAccountSuccess) return result;
      user.userId = value;
      user.lastInfoChangedDate = CurrentTimestamp();
    } else if (type == kUserInfoSetUserName) {
      user.userName = value;
      user.lastInfoChangedDate = CurrentTimestamp();
    }
    // Two things are deliberate. The other dates are written back in the form in which they are
    // shown, and then read as a moment in 1970. And an unknown type rewrites the row, too.
    result = controller->ModifyUser(user);
    if (result != kAccountSuccess) return result;
    if (!PublishEvent(FROM_HERE, "SetUserInfoByType", kSetUserInformationEvent,
                      {&user_uuid, &user.userId, &user.userName})) {
      return kAccountFailure;
    }
    LogPublished(FROM_HERE, "SetUserInfoByType", kSetUserInformationEvent);
    return kAccountSuccess;
  });
}

}  // namespace account
