// What events and answers told this program: open sessions, the latest events, and the IDs that a
// person may want to type again.
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
#include "core_fw/account/include/account_manager.h"
#include "gateway/operations/events.h"
#include "gateway/operations/parameters.h"
#include "gateway/output/records.h"

namespace gateway {

// Thread-safe.
class SeenIds {
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
  // Remembers the fields whose parameter is an ID.
  void NoteFields(const std::vector<Parameter>& parameters, const std::vector<Field>& fields);
  // The session was kept alive.
  void NoteKept(const std::string& session_id);
  void Forget(const std::string& session_id);

  std::vector<Session> sessions() const;  // oldest first
  std::vector<PastEvent> events() const;  // the last ten, oldest first
  std::set<std::string> Ids(IdKind kind) const;

 private:
  void Remember(const std::vector<Parameter>& parameters, const std::vector<Field>& fields)
      EXCLUSIVE_LOCKS_REQUIRED(lock_);
  void Erase(const std::string& session_id) EXCLUSIVE_LOCKS_REQUIRED(lock_);

  mutable base::Lock lock_;
  std::vector<Session> sessions_ GUARDED_BY(lock_);
  std::deque<PastEvent> events_ GUARDED_BY(lock_);
  std::map<IdKind, std::set<std::string>> ids_ GUARDED_BY(lock_);
};

// How many of the seen sessions are open: they may have expired without a sign-out, and a reset
// closes them without an event. Any thread.
size_t CountOpenSessions(AccountManager& accounts, const SeenIds& seen_ids);

}  // namespace gateway

#endif  // QORN_GATEWAY_OPERATIONS_SEEN_IDS_H_
