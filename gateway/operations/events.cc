#include "gateway/operations/events.h"

#include "core_fw/account/include/account_manager.h"
#include "evt/event_manager.h"

namespace gateway {
namespace {

constexpr const char* kCode = "code";

struct EventKind {
  int type;
  const char* name;
  std::vector<const char*> fields;
};

const std::vector<EventKind>& EventKinds() {
  static const std::vector<EventKind> kinds = {
      {kEventAccountAddFriend,
       "kEventAccountAddFriend",
       {"user_uuid", "friend_uuid", "friend_id", "friend_peer_id"}},
      {kEventAccountCreateUser, "kEventAccountCreateUser", {"user_uuid", "user_id", kCode}},
      {kEventAccountRemoveFriend,
       "kEventAccountRemoveFriend",
       {"user_uuid", "friend_id", "friend_peer_id"}},
      {kEventAccountRemoveUser,
       "kEventAccountRemoveUser",
       {"user_uuid", "user_id", "requesting_user_id"}},
      {kEventAccountSetUserInformation,
       "kEventAccountSetUserInformation",
       {"user_uuid", "user_id", "user_name"}},
      {kEventAccountSignIn, "kEventAccountSignIn", {"user_uuid", "user_id", kCode, "session_id"}},
      {kEventAccountSignInAlt, "kEventAccountSignInAlt", {"user_uuid", "user_id", "session_id"}},
      {kEventAccountSignOut, "kEventAccountSignOut", {"user_uuid", "user_id", "session_id"}},
  };
  return kinds;
}

}  // namespace

SeenEvent DecodeEvent(int type, const Pickle& data) {
  SeenEvent event;
  event.type = type;
  for (const EventKind& kind : EventKinds()) {
    if (kind.type != type) continue;
    event.name = kind.name;
    PickleIterator payload(data);
    for (const char* field : kind.fields) {
      std::string value;
      if (!payload.ReadString(&value)) break;
      event.fields.push_back(Field{field, {value}, field == kCode});
    }
  }
  return event;
}

Record MakeRecord(const SeenEvent& event) {
  return Record{"event",
                "event " + event.name,
                {{"event", {event.name}},
                 {"number", {std::to_string(event.type)}, false, Field::Shape::kNumber}},
                "fields",
                event.fields};
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
