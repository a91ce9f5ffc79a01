#ifndef QORN_DEVCLOUD_REQUEST_LOG_H_
#define QORN_DEVCLOUD_REQUEST_LOG_H_

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <vector>

#include "devcloud/mutex.h"
#include "devcloud/recorded_request.h"

namespace devcloud {

// The latest requests, at most 10,000 of them and 256 MiB of raw bytes. Thread-safe.
class RequestLog {
 public:
  void Add(const RecordedRequest& request);
  void Clear();
  // Oldest first.
  std::vector<RecordedRequest> requests() const;
  // Counts every request since the start or the last Clear; false after 10 seconds.
  bool WaitFor(std::size_t count) const;

 private:
  mutable Mutex mutex_;
  mutable std::condition_variable_any added_;
  std::deque<RecordedRequest> requests_ DEVCLOUD_TSA(guarded_by(mutex_));
  std::size_t raw_bytes_ DEVCLOUD_TSA(guarded_by(mutex_)) = 0;
  std::size_t count_ DEVCLOUD_TSA(guarded_by(mutex_)) = 0;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_REQUEST_LOG_H_
