// The operations of AccountManagerImpl on friends, and on the messages about them.
#include <cassert>
#include <string>
#include <vector>

#include "base/location.h"
#include "core_fw/account/src/account_event.h"
#include "core_fw/account/src/account_log.h"
#include "core_fw/account/src/account_manager_impl.h"
#include "core_fw/account/src/account_message.h"
#include "core_fw/account/src/account_operation.h"
#include "core_fw/account/src/account_records.h"
#include "core_fw/account/src/account_result.h"

namespace account {

AccountResult AccountManagerImpl::GetFriendUUIDFromFriendIDAndFriendPeerID(
    const std::string& user_uuid, const std::string& friend_id, const std::string& friend_peer_id,
    std::string* friend_uuid) {
  assert(friend_uuid != nullptr);
  return RunOperation(FROM_HERE, "GetFriendUUIDFromFriendIDAndFriendPeerID", [&] {
    return controller->GetFriendUUIDFromFriendIDAndFriendPeerID(user_uuid, friend_id,
                                                                friend_peer_id, friend_uuid);
  });
}

AccountResult AccountManagerImpl::AddFriendToDB(
    const std::string& user_uuid, const std::string& friend_id, const std::string& friend_guid,
    const std::string& friend_device_name, const std::string& friend_device_physical_address_text,
    const std::string& friend_peer_id, std::string* friend_uuid) {
  assert(friend_uuid != nullptr);
  return RunOperation(FROM_HERE, "AddFriendToDB", [&]() -> AccountResult {
    FriendInfo added;
    added.friendId = friend_id;
    added.friendGuid = friend_guid;
    added.friendQorDeviceName = friend_device_name;
    added.friendQorDevicePhysicalAddressText = friend_device_physical_address_text;
    added.friendQorDevicePeerId = friend_peer_id;
    const AccountResult result = controller->AddFriendToStore(user_uuid, added, friend_uuid);
    if (result != kAccountSuccess) return result;
    if (!PublishEvent(FROM_HERE, "AddFriendToDB", kAddFriendEvent,
                      {&user_uuid, friend_uuid, &friend_id, &friend_peer_id})) {
      return kAccountFailure;
    }
    LogPublished(FROM_HERE, "AddFriendToDB", kAddFriendEvent);
    return kAccountSuccess;
  });
}

AccountResult AccountManagerImpl::AddFriendCandidate(const std::string& user_uuid,
                                                     const std::string& friend_id,
                                                     const std::string& friend_peer_id,
                                                     std::string* friend_auth_code) {
  assert(friend_auth_code != nullptr);
  return RunOperation(FROM_HERE, "AddFriendCandidate", [&] {
    return controller->AddFriendCandidate(user_uuid, friend_id, friend_peer_id, friend_auth_code);
  });
}

AccountResult AccountManagerImpl::AddFriendRequest(
    const std::string& friend_id, const std::string& friend_auth_code,
    const std::string& oauth_auth_code, const std::string& friend_device_model_id,
    const std::string& friend_device_name, const std::string& friend_device_physical_address_text,
    std::string* friend_uuid) {
  assert(friend_uuid != nullptr);
  return RunOperation(FROM_HERE, "AddFriendRequest", [&] {
    std::string friend_guid;
    std::string user_uuid;
    std::string friend_peer_id;
    const AccountResult result = controller->SendAddFriendMessage(
        friend_id, friend_auth_code, oauth_auth_code, friend_device_model_id,
        friend_device_physical_address_text, &friend_guid, &user_uuid, &friend_peer_id);
    if (result != kAccountSuccess) return result;
    // Deliberate: the friend is stored under the given ID, although the cloud was told the
    // candidate's. AddFriendToDB is the operation itself, so its two lines are logged inside this
    // one's.
    return AddFriendToDB(user_uuid, friend_id, friend_guid, friend_device_name,
                         friend_device_physical_address_text, friend_peer_id, friend_uuid);
  });
}

AccountResult AccountManagerImpl::RemoveFriendFromDB(const std::string& user_uuid,
                                                     const std::string& friend_id,
                                                     const std::string& friend_peer_id) {
  return RunOperation(FROM_HERE, "RemoveFriendFromDB", [&]() -> AccountResult {
    const AccountResult result =
        controller->RemoveFriendFromStore(user_uuid, friend_id, friend_peer_id);
    if (result != kAccountSuccess) return result;
    // Deliberate: the only event whose publication is not logged.
    return PublishEvent(FROM_HERE, "RemoveFriendFromDB", kRemoveFriendEvent,
                        {&user_uuid, &friend_id, &friend_peer_id})
               ? kAccountSuccess
               : kAccountFailure;
  });
}

AccountResult AccountManagerImpl::RemoveFriendRequest(const std::string& user_uuid,
                                                      const std::string& friend_id,
                                                      const std::string& friend_peer_id) {
  return RunOperation(FROM_HERE, "RemoveFriendRequest", [&] {
    const AccountResult result =
        controller->SendRemoveFriendMessage(user_uuid, friend_id, friend_peer_id);
    if (result != kAccountSuccess) return result;
    return RemoveFriendFromDB(user_uuid, friend_id, friend_peer_id);
  });
}

AccountResult AccountManagerImpl::GetAllFriendsUUID(const std::string& user_uuid,
                                                    std::vector<std::string>* friend_uuids) {
  assert(friend_uuids != nullptr);
  return RunOperation(FROM_HERE, "GetAllFriendsUUID",
                      [&] { return controller->GetAllFriendsUuidList(user_uuid, friend_uuids); });
}

AccountResult AccountManagerImpl::GetFriendInformation(
    const std::string& friend_uuid, std::string* friend_id, std::string* friend_name,
    std::string* friend_guid, std::string* friend_device_name,
    std::string* friend_device_physical_address_text, std::string* friend_peer_id) {
  assert(friend_id != nullptr && friend_name != nullptr && friend_guid != nullptr);
  assert(friend_device_name != nullptr && friend_device_physical_address_text != nullptr);
  assert(friend_peer_id != nullptr);
  return RunOperation(FROM_HERE, "GetFriendInformation", [&] {
    FriendInfo found;
    const AccountResult result = controller->GetFriend(friend_uuid, &found);
    if (result != kAccountSuccess) return result;
    *friend_id = found.friendId;
    *friend_name = found.friendName;
    *friend_guid = found.friendGuid;
    *friend_device_name = found.friendQorDeviceName;
    *friend_device_physical_address_text = found.friendQorDevicePhysicalAddressText;
    *friend_peer_id = found.friendQorDevicePeerId;
    return result;
  });
}

AccountResult AccountManagerImpl::ParseAccountMessage(const std::string& message) noexcept {
  AccountResult result = kAccountFailure;
  int severity = kSeverityFailure;
  try {
    FriendMessage read;
    const MessageKind kind = ParseFriendMessage(message, &read);
    result = HandleFriendMessage(kind, read);
    // Deliberate: an unknown request returns 19, but is logged as progress. A newer module may send
    // requests that this one does not know.
    if (kind == MessageKind::kUnknownRequest || result == kAccountSuccess) {
      severity = kSeverityProgress;
    }
  } catch (...) {  // Out of memory.
    result = kAccountFailure;
  }
  try {  // One line, and none on entry.
    Log(FROM_HERE, severity, "ParseAccountMessage", {AccountResultMessage(result)});
  } catch (...) {  // The line is lost; the result stands.
  }
  return result;
}

AccountResult AccountManagerImpl::HandleFriendMessage(MessageKind kind,
                                                      const FriendMessage& message) {
  if (kind != MessageKind::kAddFriend && kind != MessageKind::kRemoveFriend) {
    return kAccountFailure;
  }
  std::string user_uuid;
  const AccountResult result = controller->GetUserUUIDFromUserID(message.user_id, &user_uuid);
  if (result != kAccountSuccess) return result;
  if (kind == MessageKind::kRemoveFriend) {
    return RemoveFriendFromDB(user_uuid, message.friend_id, message.device_peer_id);
  }
  std::string friend_uuid;
  return AddFriendToDB(user_uuid, message.friend_id, message.friend_guid, message.device_name,
                       message.device_physical_address_text, message.device_peer_id, &friend_uuid);
}

}  // namespace account
