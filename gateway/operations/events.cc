#include "gateway/operations/events.h"

#include "core_fw/account/include/account_manager.h"

namespace gateway {
namespace {

using namespace parameter;  // NOLINT: the table below is made of them

std::vector<EventKind> MakeEventKinds() {
  return {
      {kEventAccountAddFriend,
       "kEventAccountAddFriend",
       "Friends",
       "FriendAdded",
       {kUserUuid, kFriendUuid, kFriendId, kFriendPeerId}},
      {kEventAccountCreateUser,
       "kEventAccountCreateUser",
       "Users",
       "UserCreated",
       {kUserUuid, kUserId, kEventCode}},
      {kEventAccountRemoveFriend,
       "kEventAccountRemoveFriend",
       "Friends",
       "FriendRemoved",
       {kUserUuid, kFriendId, kFriendPeerId}},
      {kEventAccountRemoveUser,
       "kEventAccountRemoveUser",
       "Users",
       "UserRemoved",
       {kUserUuid, kUserId, kRequestingUserId}},
      {kEventAccountSetUserInformation,
       "kEventAccountSetUserInformation",
       "Users",
       "UserInformationChanged",
       {kUserUuid, kUserId, kUserName}},
      {kEventAccountSignIn,
       "kEventAccountSignIn",
       "Sessions",
       "SignedIn",
       {kUserUuid, kUserId, kEventCode, kSessionId}},
      {kEventAccountSignInAlt,
       "kEventAccountSignInAlt",
       "Sessions",
       "SignedInLocally",
       {kUserUuid, kUserId, kSessionId}},
      {kEventAccountSignOut,
       "kEventAccountSignOut",
       "Sessions",
       "SignedOut",
       {kUserUuid, kUserId, kSessionId}},
  };
}

}  // namespace

const std::vector<EventKind>& EventKinds() {
  static const std::vector<EventKind> kinds = MakeEventKinds();
  return kinds;
}

const EventKind* FindEventKind(int type) {
  for (const EventKind& kind : EventKinds()) {
    if (kind.type == type) return &kind;
  }
  return nullptr;
}

std::vector<Parameter> SharedPayload(const EventKind& kind) {
  std::vector<Parameter> shared;
  for (const Parameter& parameter : kind.payload) {
    if (!parameter.secret && parameter.kind != IdKind::kSessionId) shared.push_back(parameter);
  }
  return shared;
}

Record EventRecord(const SeenEvent& event) {
  return {
      .type = "event",
      .head = "event " + event.name,
      .attributes = {{.name = "event", .values = {event.name}}, NumberField("number", event.type)},
      .nested = "fields",
      .fields = event.fields};
}

}  // namespace gateway
