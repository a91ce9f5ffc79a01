// What this program has seen on the bus and in answers: open sessions, the latest events, and the
// IDs that a person may want to type again.
#ifndef QORN_GATEWAY_OPERATIONS_SEEN_IDS_H_
#define QORN_GATEWAY_OPERATIONS_SEEN_IDS_H_

#include <chrono>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "base/lock.h"
#include "base/thread_annotations.h"
#include "gateway/operations/events.h"
#include "gateway/output/records.h"

namespace gateway {

// Thread-safe.
class Sightings {
 public:
  struct Session {
    std::string session_id;
    std::string user_id;
    std::chrono::steady_clock::time_point kept;  // opened, or last kept alive by this program
  };
  struct PastEvent {
    std::string time;  // local, "2026-01-31 08:00:00"
    SeenEvent event;
  };

  // Opens and closes sessions, remembers IDs, forgets those of what is gone.
  void NoteEvent(const SeenEvent& event);
  // Remembers the fields that are IDs.
  void NoteFields(const std::vector<Field>& fields);
  void NoteKept(const std::string& session_id);
  void Forget(const std::string& session_id);

  std::vector<Session> sessions() const;  // oldest first
  std::vector<PastEvent> events() const;  // the last ten, oldest first
  // The known IDs of a kind: "user_uuid", "user_id", "session_id", "friend_uuid", "friend_id" or
  // "friend_peer_id".
  std::set<std::string> Ids(const std::string& kind) const;

 private:
  void NoteField(const Field& field) EXCLUSIVE_LOCKS_REQUIRED(lock_);
  void Erase(const std::string& session_id) EXCLUSIVE_LOCKS_REQUIRED(lock_);

  mutable base::Lock lock_;
  std::vector<Session> sessions_ GUARDED_BY(lock_);
  std::deque<PastEvent> events_ GUARDED_BY(lock_);
  std::map<std::string, std::set<std::string>> ids_ GUARDED_BY(lock_);
};

}  // namespace gateway

#endif  // QORN_GATEWAY_OPERATIONS_SEEN_IDS_H_
