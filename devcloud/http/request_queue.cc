#include "devcloud/http/request_queue.h"

#include <algorithm>
#include <utility>

namespace devcloud {

void RequestQueue::SetRate(int requests_per_second) {
  interval_ = Clock::duration::zero();
  if (requests_per_second > 0) {
    interval_ = Clock::duration(std::chrono::seconds(1)) / requests_per_second;
  }
  next_ = std::min(next_, Clock::now() + interval_);
  if (!waiting_.empty()) ServeLater();
}

void RequestQueue::Enter(Serve serve) {
  if (interval_ == interval_.zero() && waiting_.empty()) return serve();
  if (waiting_.empty()) next_ = std::max(next_, Clock::now());
  waiting_.push_back(std::move(serve));
  if (waiting_.size() == 1) ServeLater();
}

void RequestQueue::Clear() {
  waiting_.clear();
  timer_.cancel();
}

void RequestQueue::ServeLater() {
  timer_.expires_at(next_);  // cancels an earlier wait
  timer_.async_wait([this](const boost::system::error_code& error) {
    if (!error) ServeDue();
  });
}

void RequestQueue::ServeDue() {
  // The rate counts from the times that were planned: a late timer does not lower it.
  while (!waiting_.empty() && next_ <= Clock::now()) {
    next_ += interval_;
    const Serve serve = std::move(waiting_.front());
    waiting_.pop_front();
    serve();
  }
  if (!waiting_.empty()) ServeLater();
}

}  // namespace devcloud
