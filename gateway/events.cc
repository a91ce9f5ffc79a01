#include "gateway/events.h"

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

std::vector<Field> DecodeEvent(int type, const Pickle& data, std::string* name) {
  std::vector<Field> fields;
  for (const EventKind& kind : EventKinds()) {
    if (kind.type != type) continue;
    *name = kind.name;
    PickleIterator payload(data);
    for (const char* field : kind.fields) {
      std::string value;
      if (!payload.ReadString(&value)) break;
      fields.push_back(Field{field, {value}, field == kCode});
    }
  }
  return fields;
}

EventPrinter::EventPrinter(Printer* printer) {
  for (const EventKind& kind : EventKinds()) {
    listeners_.push_back(evt::EventManager::GetInstance()->AddListener(
        kind.type, [printer](int type, const Pickle& data) {
          std::string name;
          const std::vector<Field> fields = DecodeEvent(type, data, &name);
          printer->Block("event " + name, fields);
        }));
  }
}

EventPrinter::~EventPrinter() {
  for (int listener : listeners_) evt::EventManager::GetInstance()->RemoveListener(listener);
}

}  // namespace gateway
