#include "gateway/operations/events.h"

#include "core_fw/account/include/account_manager.h"
#include "evt/event_manager.h"

namespace gateway {
namespace {

using namespace parameter;  // NOLINT: the table below is made of them

std::vector<EventKind> MakeEventKinds() {
  return {
      {kEventAccountAddFriend,
       "kEventAccountAddFriend",
       {kUserUuid, kFriendUuid, kFriendId, kFriendPeerId}},
      {kEventAccountCreateUser, "kEventAccountCreateUser", {kUserUuid, kUserId, kEventCode}},
      {kEventAccountRemoveFriend,
       "kEventAccountRemoveFriend",
       {kUserUuid, kFriendId, kFriendPeerId}},
      {kEventAccountRemoveUser, "kEventAccountRemoveUser", {kUserUuid, kUserId, kRequestingUserId}},
      {kEventAccountSetUserInformation,
       "kEventAccountSetUserInformation",
       {kUserUuid, kUserId, kUserName}},
      {kEventAccountSignIn, "kEventAccountSignIn", {kUserUuid, kUserId, kEventCode, kSessionId}},
      {kEventAccountSignInAlt, "kEventAccountSignInAlt", {kUserUuid, kUserId, kSessionId}},
      {kEventAccountSignOut, "kEventAccountSignOut", {kUserUuid, kUserId, kSessionId}},
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

SeenEvent DecodeEvent(int type, const Pickle& data) {
  SeenEvent event;
  event.type = type;
  const EventKind* const kind = FindEventKind(type);
  if (kind == nullptr) return event;
  event.name = kind->name;
  PickleIterator strings(data);
  for (const Parameter& parameter : kind->payload) {
    std::string value;
    // Whoever publishes may have cut the payload short: what came before still counts.
    if (!strings.ReadString(&value)) break;
    event.fields.push_back({.name = parameter.name, .values = {value}, .secret = parameter.secret});
  }
  return event;
}

Record EventRecord(const SeenEvent& event) {
  return {
      .type = "event",
      .head = "event " + event.name,
      .attributes = {{.name = "event", .values = {event.name}}, NumberField("number", event.type)},
      .nested = "fields",
      .fields = event.fields};
}

EventListener::EventListener(const std::function<void(const SeenEvent&)>& on_event) {
  for (const EventKind& kind : EventKinds()) {
    listeners_.push_back(evt::EventManager::GetInstance()->AddListener(
        kind.type,
        [on_event](int type, const Pickle& data) { on_event(DecodeEvent(type, data)); }));
  }
}

EventListener::~EventListener() {
  for (int listener : listeners_) evt::EventManager::GetInstance()->RemoveListener(listener);
}

}  // namespace gateway
