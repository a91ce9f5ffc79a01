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

// The length of a UUID's text, and so of every session ID.
inline constexpr size_t kSessionIdLength = 36;

struct SessionRecord {
  std::array<char, kSessionIdLength> sessionId;  // Not a string: a scan follows no pointers.
  // Ticks since the session was opened or last kept alive. It stands here because it fills a gap:
  // as the last field it makes a record 80 bytes instead of 72, and that misses the aim for a
  // session's memory (docs/performance.md).
  int count = 0;
  std::string userId;
};

// The open sessions, in memory, oldest first. Session IDs begin with "3". Any thread; the lock is
// held for one operation, and never while calling out.
class SessionTable {
 public:
  SessionTable() = default;
  SessionTable(const SessionTable&) = delete;
  SessionTable& operator=(const SessionTable&) = delete;

  // The library's only table, made on first use and destroyed by DestroyInstance.
  static SessionTable* GetInstance();
  static void DestroyInstance();

  // Each returns 1 unless it says otherwise.
  AccountResult AddSession(const std::string& user_id, std::string* session_id);
  // 2, with the output untouched, for an unknown session.
  AccountResult GetSessionUserId(const std::string& session_id, std::string* user_id);
  // 2 for an unknown session.
  AccountResult SetSessionUserId(const std::string& session_id, const std::string& user_id);
  // 2 for an unknown session.
  AccountResult HasSession(const std::string& session_id);
  // Counts one tick for the session and tells whether it has expired. The walk stops at the first
  // expired record of the table, whichever that is, and then reports "expired".
  AccountResult CountAndCheckExpiry(const std::string& session_id, bool* expired);
  AccountResult ResetSessionCount(const std::string& session_id);
  AccountResult RemoveSession(const std::string& session_id);
  AccountResult RemoveAllSessions();
  AccountResult GetAllSessionIds(std::vector<std::string>* session_ids);
  // In ticks.
  AccountResult GetLifetime(int* value);
  AccountResult SetLifetime(int value);

 private:
  // The first record with this ID.
  std::vector<SessionRecord>::iterator Find(const std::string& session_id)
      EXCLUSIVE_LOCKS_REQUIRED(lock);

  std::vector<SessionRecord> records GUARDED_BY(lock);
  base::internal::LockImpl lock;
  std::atomic<int> lifetime{30};
};

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_SESSION_TABLE_H_
