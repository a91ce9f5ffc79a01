#include "core_fw/account/src/session_table.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "core_fw/account/src/identifiers.h"

namespace account {
namespace {

// A plain pointer, so that no static destructor runs when the host exits.
SessionTable* g_session_table = nullptr;

// An ID to search for. Comparing its first eight bytes as a number rejects nearly all other IDs
// without a call; "3" and seven random digits are in them.
class WantedId {
 public:
  explicit WantedId(const std::string& text) : text_(text.data()) {
    if (text.size() != kSessionIdLength) return;
    can_match_ = true;
    std::memcpy(&first_, text_, sizeof(first_));
  }
  // False for an ID of another length, which no record can have.
  bool CanMatch() const { return can_match_; }
  bool Matches(const SessionRecord& record) const {
    std::uint64_t first = 0;
    std::memcpy(&first, record.sessionId.data(), sizeof(first));
    return first == first_ && std::memcmp(record.sessionId.data(), text_, kSessionIdLength) == 0;
  }

 private:
  const char* text_;
  std::uint64_t first_ = 0;
  bool can_match_ = false;
};

}  // namespace

SessionTable* SessionTable::GetInstance() {
  if (g_session_table == nullptr) {
    g_session_table = new SessionTable;
    g_session_table->RemoveAllSessions();
  }
  return g_session_table;
}

void SessionTable::DestroyInstance() { delete std::exchange(g_session_table, nullptr); }

std::vector<SessionRecord>::iterator SessionTable::Find(const std::string& session_id) {
  const WantedId wanted(session_id);
  if (!wanted.CanMatch()) return records.end();
  return std::find_if(records.begin(), records.end(),
                      [&](const SessionRecord& record) { return wanted.Matches(record); });
}

AccountResult SessionTable::AddSession(const std::string& user_id, std::string* session_id) {
  // Made before the lock is taken: generating it is a system call.
  std::string made = MakeUuidWithFirst('3');
  SessionRecord record;
  made.copy(record.sessionId.data(), kSessionIdLength);
  record.userId = user_id;
  {
    base::internal::AutoLockImpl hold(lock);
    // Grow by an eighth and not by a factor of two: most of the memory would never be used.
    if (records.size() == records.capacity()) records.reserve(records.size() * 9 / 8 + 8);
    records.push_back(std::move(record));
  }
  *session_id = std::move(made);
  return kAccountSuccess;
}

AccountResult SessionTable::GetSessionUserId(const std::string& session_id, std::string* user_id) {
  base::internal::AutoLockImpl hold(lock);
  const auto record = Find(session_id);
  if (record == records.end()) return kAccountInvalidSessionId;
  *user_id = record->userId;
  return kAccountSuccess;
}

AccountResult SessionTable::SetSessionUserId(const std::string& session_id,
                                             const std::string& user_id) {
  base::internal::AutoLockImpl hold(lock);
  const auto record = Find(session_id);
  if (record == records.end()) return kAccountInvalidSessionId;
  record->userId = user_id;
  return kAccountSuccess;
}

AccountResult SessionTable::HasSession(const std::string& session_id) {
  base::internal::AutoLockImpl hold(lock);
  return Find(session_id) != records.end() ? kAccountSuccess : kAccountInvalidSessionId;
}

AccountResult SessionTable::CountAndCheckExpiry(const std::string& session_id, bool* expired) {
  const WantedId wanted(session_id);
  base::internal::AutoLockImpl hold(lock);
  const int limit = lifetime.load(std::memory_order_relaxed);
  for (SessionRecord& record : records) {
    if (wanted.CanMatch() && wanted.Matches(record)) ++record.count;
    // Deliberate: an expired record stops the walk, whichever session was asked about. The sessions
    // behind it are not counted until it is removed.
    if (record.count >= limit) {
      *expired = true;
      return kAccountSuccess;
    }
  }
  *expired = false;
  return kAccountSuccess;
}

AccountResult SessionTable::ResetSessionCount(const std::string& session_id) {
  const WantedId wanted(session_id);
  if (!wanted.CanMatch()) return kAccountSuccess;
  base::internal::AutoLockImpl hold(lock);
  for (SessionRecord& record : records) {
    if (wanted.Matches(record)) record.count = 0;
  }
  return kAccountSuccess;
}

AccountResult SessionTable::RemoveSession(const std::string& session_id) {
  base::internal::AutoLockImpl hold(lock);
  const auto record = Find(session_id);
  if (record != records.end()) records.erase(record);
  return kAccountSuccess;
}

AccountResult SessionTable::RemoveAllSessions() {
  base::internal::AutoLockImpl hold(lock);
  records.clear();
  return kAccountSuccess;
}

AccountResult SessionTable::GetAllSessionIds(std::vector<std::string>* session_ids) {
  base::internal::AutoLockImpl hold(lock);
  // One allocation, because other threads wait for the lock meanwhile.
  session_ids->reserve(session_ids->size() + records.size());
  for (const SessionRecord& record : records) {
    session_ids->emplace_back(record.sessionId.data(), kSessionIdLength);
  }
  return kAccountSuccess;
}

AccountResult SessionTable::GetLifetime(int* value) {
  *value = lifetime.load(std::memory_order_relaxed);
  return kAccountSuccess;
}

AccountResult SessionTable::SetLifetime(int value) {
  lifetime.store(value, std::memory_order_relaxed);
  return kAccountSuccess;
}

}  // namespace account
