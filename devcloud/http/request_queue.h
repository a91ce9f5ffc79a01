#ifndef QORN_DEVCLOUD_HTTP_REQUEST_QUEUE_H_
#define QORN_DEVCLOUD_HTTP_REQUEST_QUEUE_H_

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <deque>
#include <functional>

namespace devcloud {

// Serves requests at a limited rate, first in, first out. Network thread only.
class RequestQueue {
 public:
  using Serve = std::function<void()>;

  explicit RequestQueue(boost::asio::io_context& io) : timer_(io) {}

  // 0: no limit; the requests that wait are served at once.
  void SetRate(int requests_per_second);

  // Calls `serve` when the request's turn has come; before this returns, if there is no limit.
  void Enter(Serve serve);

  // Drops the requests that wait.
  void Clear();

 private:
  using Clock = std::chrono::steady_clock;

  void ServeLater();
  void ServeDue();

  boost::asio::steady_timer timer_;
  Clock::duration interval_{0};
  Clock::time_point next_;  // the earliest time at which a request may be served
  std::deque<Serve> waiting_;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_REQUEST_QUEUE_H_
