#ifndef QORN_DEVCLOUD_CONTROL_REQUEST_LOG_H_
#define QORN_DEVCLOUD_CONTROL_REQUEST_LOG_H_

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "base/condition_variable.h"
#include "base/lock.h"
#include "base/thread_annotations.h"
#include "devcloud/http/recorded_request.h"
#include "devcloud/services/clock.h"

namespace devcloud {

// What a list of requests shows of one. Target and answer line are cut after 200 bytes.
struct RequestSummary {
  std::uint64_t number;
  TimePoint time;
  bool tls;
  std::string method;
  std::string target;
  std::size_t request_bytes;
  std::string user;
  std::string fault;
  bool is_answered;
  std::size_t answer_bytes;
  std::string answer_line;  // the first line of the answer
};

struct RequestChanges {
  std::uint64_t revision;
  std::uint64_t oldest;  // the number of the oldest request in the log
  bool from_start;       // numbers have begun again: what was told before is void
  std::vector<RequestSummary> summaries;
};

// The latest requests, limited to 10,000 of them and to 256 MiB of requests and answers.
// Thread-safe.
class RequestLog {
 public:
  // Sets the request's number.
  void Add(RecordedRequest* request);
  // Does nothing if the request has been dropped.
  void SetReply(const RecordedRequest& request, const std::string& fault,
                std::optional<std::string> answer);
  // Numbers go on.
  void Clear();
  // Also begins again with the number 1.
  void StartOver();
  // Oldest first.
  std::vector<RecordedRequest> requests() const;
  std::optional<RecordedRequest> Find(std::uint64_t number) const;
  // Increases with each change, from 1.
  std::uint64_t revision() const;
  // Those of the latest 200 requests that were added or changed after the revision, oldest first.
  RequestChanges ChangesSince(std::uint64_t revision) const;
  // Waits until `count` requests have been added since the start or the last Clear, even if some
  // were dropped; false after 10 seconds.
  bool WaitFor(std::size_t count) const;

 private:
  struct Entry {
    RecordedRequest request;
    std::uint64_t revision;
  };

  // Null if the request is not in the log.
  const Entry* FindEntry(std::uint64_t number) const EXCLUSIVE_LOCKS_REQUIRED(lock_);
  void DropOldest() EXCLUSIVE_LOCKS_REQUIRED(lock_);
  void Empty() EXCLUSIVE_LOCKS_REQUIRED(lock_);

  mutable base::Lock lock_;
  mutable base::ConditionVariable added_;
  std::deque<Entry> entries_ GUARDED_BY(lock_);  // numbers are consecutive
  std::size_t bytes_ GUARDED_BY(lock_) = 0;
  std::size_t count_ GUARDED_BY(lock_) = 0;
  std::uint64_t last_number_ GUARDED_BY(lock_) = 0;
  std::uint64_t revision_ GUARDED_BY(lock_) = 1;
  std::uint64_t run_ GUARDED_BY(lock_) = 0;
  std::uint64_t first_revision_ GUARDED_BY(lock_) = 1;  // of this run
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_CONTROL_REQUEST_LOG_H_
