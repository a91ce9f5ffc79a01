// The operations of AccountManagerImpl that create, remove and look up users.
#include <cassert>
#include <string>

#include "base/location.h"
#include "core_fw/account/src/account_event.h"
#include "core_fw/account/src/account_manager_impl.h"
#include "core_fw/account/src/account_operation.h"

namespace account {

AccountResult AccountManagerImpl::CreateUser(const std::string& user_id,
                                             const std::string& auth_code, std::string* user_uuid) {
  assert(user_uuid != nullptr);
  return RunOperation(FROM_HERE, "CreateUser", [&]() -> AccountResult {
    const AccountResult result = controller->CreateAccount(user_id, auth_code, user_uuid);
    if (result != kAccountSuccess) return result;
    if (!PublishEvent(FROM_HERE, "CreateUser", kCreateUserEvent,
                      {user_uuid, &user_id, &auth_code})) {
      return kAccountFailure;
    }
    LogPublished(FROM_HERE, "CreateUser", kCreateUserEvent);
    return kAccountSuccess;
  });
}

AccountResult AccountManagerImpl::RemoveUser(const std::string& user_id,
                                             const std::string& target_user_id) {
  return RunOperation(FROM_HERE, "RemoveUser", [&]() -> AccountResult {
    std::string user_uuid;
    AccountResult result = GetUserUUIDFromUserID(user_id, &user_uuid);
    if (result != kAccountSuccess) return result;
    // Both IDs are checked before the cloud is asked. The target's UUID is also part of the event,
    // and cannot be looked up once the user is removed.
    std::string target_uuid;
    result = GetUserUUIDFromUserID(target_user_id, &target_uuid);
    if (result != kAccountSuccess) return result;
    result = controller->RemoveAccount(user_id, target_user_id);
    if (result != kAccountSuccess) return result;
    if (!PublishEvent(FROM_HERE, "RemoveUser", kRemoveUserEvent,
                      {&target_uuid, &target_user_id, &user_id})) {
      return kAccountFailure;
    }
    LogPublished(FROM_HERE, "RemoveUser", kRemoveUserEvent);
    return kAccountSuccess;
  });
}

AccountResult AccountManagerImpl::GetUserUUIDFromUserID(const std::string& user_id,
                                                        std::string* user_uuid) {
  assert(user_uuid != nullptr);
  return RunOperation(FROM_HERE, "GetUserUUIDFromUserID",
                      [&] { return controller->GetUserUUIDFromUserID(user_id, user_uuid); });
}

// The next four deliberately do nothing: they keep their slots in the interface.

AccountResult AccountManagerImpl::CreateUserRequest(const std::string& first,
                                                    const std::string& second) {
  return RunOperation(FROM_HERE, "CreateUserRequest",
                      [&] { return controller->CreateUserRequest(first, second); });
}

AccountResult AccountManagerImpl::GetUserCreationRequest(const std::string& first,
                                                         const std::string& second) {
  return RunOperation(FROM_HERE, "GetUserCreationRequest",
                      [&] { return controller->GetUserCreationRequest(first, second); });
}

AccountResult AccountManagerImpl::RemoveUserRequest(const std::string& first,
                                                    const std::string& second) {
  return RunOperation(FROM_HERE, "RemoveUserRequest",
                      [&] { return controller->RemoveUserRequest(first, second); });
}

AccountResult AccountManagerImpl::SearchUser(const std::string& first, const std::string& second) {
  return RunOperation(FROM_HERE, "SearchUser",
                      [&] { return controller->SearchUser(first, second); });
}

}  // namespace account
