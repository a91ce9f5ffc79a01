#ifndef QORN_DEVCLOUD_REQUEST_LOG_H_
#define QORN_DEVCLOUD_REQUEST_LOG_H_

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "devcloud/mutex.h"
#include "devcloud/recorded_request.h"

namespace devcloud {

// A line about one request. Target and answer line are cut after 200 bytes.
struct RequestSummary {
  std::uint64_t number;
  TimePoint time;
  bool tls;
  std::string method;
  std::string target;
  std::size_t request_bytes;
  std::string fault;
  bool is_answered;
  std::size_t answer_bytes;
  std::string answer_line;  // the first line of the answer
};

struct RequestChanges {
  std::uint64_t revision;
  std::uint64_t oldest;  // no request before this number is in the log any more
  std::vector<RequestSummary> summaries;
};

// The latest requests, at most 10,000 of them and 256 MiB of raw bytes and answers. Thread-safe.
class RequestLog {
 public:
  // Gives the request its number.
  void Add(RecordedRequest* request);
  // Nothing happens when the request is in the log no more.
  void SetReply(std::uint64_t number, const std::string& fault, std::optional<std::string> answer);
  void Clear();
  // Oldest first.
  std::vector<RecordedRequest> requests() const;
  std::optional<RecordedRequest> Find(std::uint64_t number) const;
  // Grows with each change, from 1 on.
  std::uint64_t revision() const;
  // Those of the latest 200 requests that came or changed after the revision, oldest first.
  RequestChanges ChangesSince(std::uint64_t revision) const;
  // Counts every request since the start or the last Clear; false after 10 seconds.
  bool WaitFor(std::size_t count) const;

 private:
  struct Entry {
    RecordedRequest request;
    std::uint64_t revision;
  };

  // Null when it is not there.
  const Entry* At(std::uint64_t number) const DEVCLOUD_TSA(requires_capability(mutex_));
  void DropOldest() DEVCLOUD_TSA(requires_capability(mutex_));

  mutable Mutex mutex_;
  mutable std::condition_variable_any added_;
  std::deque<Entry> entries_ DEVCLOUD_TSA(guarded_by(mutex_));  // numbered without a gap
  std::size_t bytes_ DEVCLOUD_TSA(guarded_by(mutex_)) = 0;
  std::size_t count_ DEVCLOUD_TSA(guarded_by(mutex_)) = 0;
  std::uint64_t last_number_ DEVCLOUD_TSA(guarded_by(mutex_)) = 0;
  std::uint64_t revision_ DEVCLOUD_TSA(guarded_by(mutex_)) = 1;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_REQUEST_LOG_H_
