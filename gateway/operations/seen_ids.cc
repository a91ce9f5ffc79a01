#include "gateway/operations/seen_ids.h"

#include "core_fw/account/include/account_manager.h"
#include "gateway/output/clock_text.h"

namespace gateway {
namespace {

constexpr size_t kKeptEvents = 10;
constexpr size_t kMaxIdsOfAKind = 10000;

// The kind of ID that a field holds; "" for a field that is none.
std::string KindOf(const std::string& field) {
  for (const char* kind : {"user_uuid", "user_id", "session_id", "friend_uuid", "friend_id"}) {
    if (field == kind || field == std::string(kind) + "s") return kind;
  }
  // This gateway's own peer ID is what a friend's gateway is told.
  if (field == "friend_peer_id" || field == "peer_id") return "friend_peer_id";
  return "";
}

std::string ValueOf(const std::vector<Field>& fields, const std::string& name) {
  for (const Field& field : fields) {
    if (field.name == name && !field.values.empty()) return field.values[0];
  }
  return "";
}

}  // namespace

void Sightings::NoteEvent(const SeenEvent& event) {
  const std::string session_id = ValueOf(event.fields, "session_id");
  base::AutoLock hold(lock_);
  events_.push_back(PastEvent{LocalTime(), event});
  if (events_.size() > kKeptEvents) events_.pop_front();
  for (const Field& field : event.fields) NoteField(field);
  if (event.type == kEventAccountSignOut) Erase(session_id);
  if (event.type == kEventAccountSignIn || event.type == kEventAccountSignInAlt) {
    sessions_.push_back(
        Session{session_id, ValueOf(event.fields, "user_id"), std::chrono::steady_clock::now()});
  }
  if (event.type == kEventAccountRemoveUser) {
    ids_["user_uuid"].erase(ValueOf(event.fields, "user_uuid"));
  }
}

void Sightings::NoteFields(const std::vector<Field>& fields) {
  base::AutoLock hold(lock_);
  for (const Field& field : fields) NoteField(field);
}

void Sightings::NoteField(const Field& field) {
  const std::string kind = KindOf(field.name);
  if (kind.empty()) return;
  std::set<std::string>& ids = ids_[kind];
  for (const std::string& value : field.values) {
    if (!value.empty() && ids.size() < kMaxIdsOfAKind) ids.insert(value);
  }
}

void Sightings::NoteKept(const std::string& session_id) {
  base::AutoLock hold(lock_);
  for (Session& session : sessions_) {
    if (session.session_id == session_id) session.kept = std::chrono::steady_clock::now();
  }
}

void Sightings::Forget(const std::string& session_id) {
  base::AutoLock hold(lock_);
  Erase(session_id);
}

void Sightings::Erase(const std::string& session_id) {
  std::erase_if(sessions_,
                [&](const Session& session) { return session.session_id == session_id; });
  ids_["session_id"].erase(session_id);
}

std::vector<Sightings::Session> Sightings::sessions() const {
  base::AutoLock hold(lock_);
  return sessions_;
}

std::vector<Sightings::PastEvent> Sightings::events() const {
  base::AutoLock hold(lock_);
  return {events_.begin(), events_.end()};
}

std::set<std::string> Sightings::Ids(const std::string& kind) const {
  base::AutoLock hold(lock_);
  auto found = ids_.find(kind);
  return found == ids_.end() ? std::set<std::string>() : found->second;
}

}  // namespace gateway
