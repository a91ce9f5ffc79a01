#include "devcloud/request_log.h"

#include <chrono>

namespace devcloud {
namespace {

constexpr std::size_t kMaxRequests = 10'000;
constexpr std::size_t kMaxRawBytes = 256u << 20;
constexpr std::chrono::seconds kPatience(10);

}  // namespace

void RequestLog::Add(const RecordedRequest& request) {
  MutexLock lock(mutex_);
  requests_.push_back(request);
  raw_bytes_ += request.raw.size();
  ++count_;
  while (requests_.size() > kMaxRequests || raw_bytes_ > kMaxRawBytes) {
    raw_bytes_ -= requests_.front().raw.size();
    requests_.pop_front();
  }
  added_.notify_all();
}

void RequestLog::Clear() {
  MutexLock lock(mutex_);
  requests_.clear();
  raw_bytes_ = 0;
  count_ = 0;
}

std::vector<RecordedRequest> RequestLog::requests() const {
  MutexLock lock(mutex_);
  return {requests_.begin(), requests_.end()};
}

bool RequestLog::WaitFor(std::size_t count) const {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  MutexLock lock(mutex_);
  while (count_ < count) {
    if (added_.wait_until(mutex_, deadline) == std::cv_status::timeout) return count_ >= count;
  }
  return true;
}

}  // namespace devcloud
