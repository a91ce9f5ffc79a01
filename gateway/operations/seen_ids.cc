#include "gateway/operations/seen_ids.h"

#include <algorithm>

#include "gateway/output/clock_text.h"

namespace gateway {
namespace {

constexpr size_t kKeptEvents = 10;
// A gateway that runs for years must not grow with every ID that it meets.
constexpr size_t kMaxIdsOfAKind = 10000;

std::string FirstValue(const std::vector<Field>& fields, const std::string& name) {
  for (const Field& field : fields) {
    if (field.name == name && !field.values.empty()) return field.values[0];
  }
  return "";
}

}  // namespace

void SeenIds::NoteEvent(const SeenEvent& event) {
  const std::string session_id = FirstValue(event.fields, "session_id");
  base::AutoLock hold(lock_);
  events_.push_back(PastEvent{LocalTime(), event});
  if (events_.size() > kKeptEvents) events_.pop_front();
  if (const EventKind* const kind = FindEventKind(event.type)) {
    Remember(kind->payload, event.fields);
  }
  if (event.type == kEventAccountSignOut) Erase(session_id);
  if (event.type == kEventAccountSignIn || event.type == kEventAccountSignInAlt) {
    sessions_.push_back(
        Session{session_id, FirstValue(event.fields, "user_id"), std::chrono::steady_clock::now()});
  }
  if (event.type == kEventAccountRemoveUser) {
    ids_[IdKind::kUserUuid].erase(FirstValue(event.fields, "user_uuid"));
  }
}

void SeenIds::NoteFields(const std::vector<Parameter>& parameters,
                         const std::vector<Field>& fields) {
  base::AutoLock hold(lock_);
  Remember(parameters, fields);
}

void SeenIds::Remember(const std::vector<Parameter>& parameters, const std::vector<Field>& fields) {
  for (const Field& field : fields) {
    // By name: of a failed operation or a payload that was cut short some are missing.
    const auto parameter =
        std::find_if(parameters.begin(), parameters.end(),
                     [&field](const Parameter& each) { return field.name == each.name; });
    if (parameter == parameters.end() || parameter->kind == IdKind::kNone) continue;
    std::set<std::string>& ids = ids_[parameter->kind];
    for (const std::string& value : field.values) {
      if (!value.empty() && ids.size() < kMaxIdsOfAKind) ids.insert(value);
    }
  }
}

void SeenIds::NoteKept(const std::string& session_id) {
  base::AutoLock hold(lock_);
  for (Session& session : sessions_) {
    if (session.session_id == session_id) session.kept = std::chrono::steady_clock::now();
  }
}

void SeenIds::Forget(const std::string& session_id) {
  base::AutoLock hold(lock_);
  Erase(session_id);
}

void SeenIds::Erase(const std::string& session_id) {
  std::erase_if(sessions_,
                [&](const Session& session) { return session.session_id == session_id; });
  ids_[IdKind::kSessionId].erase(session_id);
}

std::vector<SeenIds::Session> SeenIds::sessions() const {
  base::AutoLock hold(lock_);
  return sessions_;
}

std::vector<SeenIds::PastEvent> SeenIds::events() const {
  base::AutoLock hold(lock_);
  return {events_.begin(), events_.end()};
}

std::set<std::string> SeenIds::Ids(IdKind kind) const {
  base::AutoLock hold(lock_);
  auto found = ids_.find(kind);
  return found == ids_.end() ? std::set<std::string>() : found->second;
}

size_t CountOpenSessions(AccountManager& accounts, const SeenIds& seen_ids) {
  const std::vector<SeenIds::Session> seen = seen_ids.sessions();
  return static_cast<size_t>(std::count_if(seen.begin(), seen.end(), [&](const auto& session) {
    return accounts.CheckSessionValidation(session.session_id) == kAccountSuccess;
  }));
}

}  // namespace gateway
