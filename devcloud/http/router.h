#ifndef QORN_DEVCLOUD_HTTP_ROUTER_H_
#define QORN_DEVCLOUD_HTTP_ROUTER_H_

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "devcloud/http/http_text.h"
#include "devcloud/http/recorded_request.h"
#include "devcloud/http/reply.h"

namespace devcloud {

// Calls the handler for a request's path and method. Thread-safe once all routes are added.
class Router {
 public:
  using Handler = std::function<Answer(const RecordedRequest&)>;

  void Add(const std::string& method, const std::string& path, Handler handler);
  // A path whose reply goes on for as long as the client reads (Reply::Delivery::kStream).
  void AddStream(const std::string& method, const std::string& path, std::function<Reply()> open);

  // Opens the stream that the request asks for; null if its path and method are not a stream's.
  std::optional<Reply> OpenStream(const RecordedRequest& request) const;

  // Answers 404 for an unknown path, 405 with an Allow line for a method that the path does not
  // take, and 500 if the handler throws.
  Answer Handle(const RecordedRequest& request) const;

  // "METHOD PATH" of each route, in the order in which they were added.
  std::vector<std::string> RouteNames() const;

 private:
  struct Route {
    std::string method;
    std::string path;
    Handler handler;              // null for a stream
    std::function<Reply()> open;  // null for all others
  };

  std::vector<Route> routes_;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_ROUTER_H_
