#include "core_fw/account/src/session_table.h"

#include <algorithm>
#include <utility>

#include "core_fw/account/src/identifiers.h"

namespace account {
namespace {

// A plain pointer: nothing of the library is destroyed behind the host's back when it ends.
SessionTable* g_session_table = nullptr;

}  // namespace

SessionTable* SessionTable::GetInstance() {
  if (g_session_table == nullptr) {
    g_session_table = new SessionTable;
    g_session_table->RemoveAllSessions();
  }
  return g_session_table;
}

void SessionTable::DestroyInstance() { delete std::exchange(g_session_table, nullptr); }

SessionRecord* SessionTable::Find(const std::string& session_id) {
  for (SessionRecord& record : records) {
    if (record.sessionId == session_id) return &record;
  }
  return nullptr;
}

AccountResult SessionTable::AddSession(const std::string& user_id, std::string* session_id) {
  SessionRecord record;
  record.sessionId = MakeUuidWithFirst('3');
  record.userId = user_id;
  std::string made = record.sessionId;
  {
    base::internal::AutoLockImpl guard(lock);
    records.push_back(std::move(record));
  }
  *session_id = std::move(made);
  return kAccountSuccess;
}

AccountResult SessionTable::GetSessionUserId(const std::string& session_id, std::string* user_id) {
  base::internal::AutoLockImpl guard(lock);
  const SessionRecord* record = Find(session_id);
  if (record == nullptr) return kAccountInvalidSessionId;
  *user_id = record->userId;
  return kAccountSuccess;
}

AccountResult SessionTable::SetSessionUserId(const std::string& session_id,
                                             const std::string& user_id) {
  base::internal::AutoLockImpl guard(lock);
  SessionRecord* record = Find(session_id);
  if (record == nullptr) return kAccountInvalidSessionId;
  record->userId = user_id;
  return kAccountSuccess;
}

AccountResult SessionTable::HasSession(const std::string& session_id) {
  base::internal::AutoLockImpl guard(lock);
  return Find(session_id) != nullptr ? kAccountSuccess : kAccountInvalidSessionId;
}

AccountResult SessionTable::CountAndCheckExpiry(const std::string& session_id, bool* expired) {
  base::internal::AutoLockImpl guard(lock);
  const int limit = lifetime.load(std::memory_order_relaxed);
  for (SessionRecord& record : records) {
    if (record.sessionId == session_id) ++record.count;
    // Deliberate: an expired record further up ends the walk for the sessions after it, which
    // are counted again once it is gone.
    if (record.count >= limit) {
      *expired = true;
      return kAccountSuccess;
    }
  }
  *expired = false;
  return kAccountSuccess;
}

AccountResult SessionTable::ResetSessionCount(const std::string& session_id) {
  base::internal::AutoLockImpl guard(lock);
  for (SessionRecord& record : records) {
    if (record.sessionId == session_id) record.count = 0;
  }
  return kAccountSuccess;
}

AccountResult SessionTable::RemoveSession(const std::string& session_id) {
  base::internal::AutoLockImpl guard(lock);
  const auto found = std::find_if(records.begin(), records.end(), [&](const SessionRecord& record) {
    return record.sessionId == session_id;
  });
  if (found != records.end()) records.erase(found);
  return kAccountSuccess;
}

AccountResult SessionTable::RemoveAllSessions() {
  base::internal::AutoLockImpl guard(lock);
  records.clear();
  return kAccountSuccess;
}

AccountResult SessionTable::GetAllSessionIds(std::vector<std::string>* session_ids) {
  base::internal::AutoLockImpl guard(lock);
  for (const SessionRecord& record : records) session_ids->push_back(record.sessionId);
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
