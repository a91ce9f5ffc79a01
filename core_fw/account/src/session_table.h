#ifndef QORN_CORE_FW_ACCOUNT_SRC_SESSION_TABLE_H_
#define QORN_CORE_FW_ACCOUNT_SRC_SESSION_TABLE_H_

#include <array>
#include <atomic>
#include <cstddef>
#include <string>
#include <vector>

#include "base/lock.h"
#include "base/thread_annotations.h"
#include "core_fw/account/include/account_manager.h"

namespace account {

// A UUID's text: session IDs are all that long.
inline constexpr std::size_t kSessionIdLength = 36;

struct SessionRecord {
  std::array<char, kSessionIdLength> sessionId;  // In the record, so that a scan reads on.
  int count = 0;  // Ticks since the session was opened or last kept alive. Here it fills a gap.
  std::string userId;
};

// The open sessions, in memory, in the order in which they were opened. Session IDs begin with
// "3". Any thread; the lock is held for one operation and never while calling out.
class SessionTable {
 public:
  SessionTable() = default;
  SessionTable(const SessionTable&) = delete;
  SessionTable& operator=(const SessionTable&) = delete;

  // The library's one table: made and emptied on first use, gone after DestroyInstance.
  static SessionTable* GetInstance();
  static void DestroyInstance();

  // Each answers 1 unless it says otherwise.
  AccountResult AddSession(const std::string& user_id, std::string* session_id);
  // 2, output untouched, for an unknown session.
  AccountResult GetSessionUserId(const std::string& session_id, std::string* user_id);
  // 2 for an unknown session.
  AccountResult SetSessionUserId(const std::string& session_id, const std::string& user_id);
  // 2 for an unknown session.
  AccountResult HasSession(const std::string& session_id);
  // Counts one tick for the session and tells whether it has reached the lifetime. The walk ends,
  // expired, at the first record in the table that has reached it, whichever that is.
  AccountResult CountAndCheckExpiry(const std::string& session_id, bool* expired);
  AccountResult ResetSessionCount(const std::string& session_id);
  AccountResult RemoveSession(const std::string& session_id);
  AccountResult RemoveAllSessions();
  AccountResult GetAllSessionIds(std::vector<std::string>* session_ids);
  // In ticks.
  AccountResult GetLifetime(int* value);
  AccountResult SetLifetime(int value);

 private:
  // The record with this ID, of which there is at most one.
  std::vector<SessionRecord>::iterator Find(const std::string& session_id)
      EXCLUSIVE_LOCKS_REQUIRED(lock);

  std::vector<SessionRecord> records GUARDED_BY(lock);
  base::internal::LockImpl lock;
  std::atomic<int> lifetime{30};
};

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_SESSION_TABLE_H_
