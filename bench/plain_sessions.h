#ifndef QORN_BENCH_PLAIN_SESSIONS_H_
#define QORN_BENCH_PLAIN_SESSIONS_H_

#include <mutex>
#include <string>
#include <vector>

namespace bench {

// The plain way to keep sessions: a mutex and a linear scan. Any thread.
class PlainSessions {
 public:
  void Add(const std::string& session_id, const std::string& user_id) {
    records_.push_back({session_id, user_id, 0});
  }
  bool Has(const std::string& session_id) {
    const std::lock_guard<std::mutex> hold(mutex_);
    return Find(session_id) != nullptr;
  }
  bool GetUser(const std::string& session_id, std::string* user_id) {
    const std::lock_guard<std::mutex> hold(mutex_);
    const Record* record = Find(session_id);
    if (record != nullptr) *user_id = record->user_id;
    return record != nullptr;
  }
  bool Reset(const std::string& session_id) {
    const std::lock_guard<std::mutex> hold(mutex_);
    Record* record = Find(session_id);
    if (record != nullptr) record->count = 0;
    return record != nullptr;
  }
  // Counts for one session; a session that has reached the lifetime would end the walk.
  bool Count(const std::string& session_id) {
    const std::lock_guard<std::mutex> hold(mutex_);
    for (Record& record : records_) {
      if (record.session_id == session_id) ++record.count;
      if (record.count >= kLifetime) return true;
    }
    return false;
  }

 private:
  static constexpr int kLifetime = 1 << 30;
  struct Record {
    std::string session_id, user_id;
    int count;
  };
  Record* Find(const std::string& session_id) {
    for (Record& record : records_) {
      if (record.session_id == session_id) return &record;
    }
    return nullptr;
  }

  std::mutex mutex_;
  std::vector<Record> records_;
};

}  // namespace bench

#endif  // QORN_BENCH_PLAIN_SESSIONS_H_
