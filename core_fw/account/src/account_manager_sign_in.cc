// The operations of AccountManagerImpl for sign-in, sign-out and token refresh.
#include <cassert>
#include <string>

#include "base/location.h"
#include "core_fw/account/src/account_event.h"
#include "core_fw/account/src/account_manager_impl.h"
#include "core_fw/account/src/account_operation.h"
#include "core_fw/account/src/account_records.h"

namespace account {

AccountResult AccountManagerImpl::SignIn(const std::string& user_id, const std::string& auth_code,
                                         std::string* user_uuid, std::string* session_id,
                                         bool* connection_failed) {
  assert(user_uuid != nullptr && session_id != nullptr && connection_failed != nullptr);
  return RunOperation(FROM_HERE, "SignIn", [&]() -> AccountResult {
    AccountResult result =
        controller->SignInWithAuthCode(user_id, auth_code, user_uuid, connection_failed);
    if (result != kAccountSuccess) return result;
    result = sessionTable->AddSession(user_id, session_id);
    if (result != kAccountSuccess) return result;
    if (!PublishEvent(FROM_HERE, "SignIn", kSignInEvent,
                      {user_uuid, &user_id, &auth_code, session_id})) {
      return kAccountFailure;
    }
    LogPublished(FROM_HERE, "SignIn", kSignInEvent);
    return kAccountSuccess;
  });
}

AccountResult AccountManagerImpl::SignInAlt(const std::string& user_id, const std::string& password,
                                            std::string* user_uuid, std::string* session_id) {
  assert(user_uuid != nullptr && session_id != nullptr);
  return RunOperation(FROM_HERE, "SignInAlt", [&]() -> AccountResult {
    if (user_id != kSystemAccountId) {
      // Deliberate: no password is checked. Whoever may call this operation is trusted to have
      // identified the person.
      const AccountResult result = controller->SignInLocalUser(user_id, user_uuid);
      if (result != kAccountSuccess) return result;
    } else {
      if (password != kSystemAccountPassword) return kAccountFailure;
      *user_uuid = kSystemAccountId;
    }
    const AccountResult result = sessionTable->AddSession(user_id, session_id);
    if (result != kAccountSuccess) return result;
    if (!PublishEvent(FROM_HERE, "SignInAlt", kSignInAltEvent, {user_uuid, &user_id, session_id})) {
      return kAccountFailure;
    }
    LogPublished(FROM_HERE, "SignInAlt", kSignInAltEvent);
    return kAccountSuccess;
  });
}

AccountResult AccountManagerImpl::SignOut(const std::string& session_id) {
  return RunOperation(FROM_HERE, "SignOut", [&]() -> AccountResult {
    std::string user_id;
    AccountResult result = sessionTable->GetSessionUserId(session_id, &user_id);
    if (result != kAccountSuccess) return result;
    // Does nothing today; the controller's place for work at a sign-out.
    result = controller->SignOutLocalUser(user_id);
    if (result != kAccountSuccess) return result;
    result = sessionTable->RemoveSession(session_id);
    if (result != kAccountSuccess) return result;
    std::string user_uuid;
    result = GetUserUUIDFromUserID(user_id, &user_uuid);
    // The session stays closed even if its user is no longer stored; only the event is missing.
    if (result != kAccountSuccess) return result;
    if (!PublishEvent(FROM_HERE, "SignOut", kSignOutEvent, {&user_uuid, &user_id, &session_id})) {
      return kAccountFailure;
    }
    LogPublished(FROM_HERE, "SignOut", kSignOutEvent);
    return kAccountSuccess;
  });
}

AccountResult AccountManagerImpl::RefreshAccessToken(const std::string& user_id) {
  return RunOperation(FROM_HERE, "RefreshAccessToken",
                      [&] { return controller->RefreshAccessToken(user_id); });
}

}  // namespace account
