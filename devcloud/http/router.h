#ifndef QORN_DEVCLOUD_HTTP_ROUTER_H_
#define QORN_DEVCLOUD_HTTP_ROUTER_H_

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "devcloud/http/http_text.h"
#include "devcloud/http/recorded_request.h"

namespace devcloud {

// Calls the handler for a request's path and method. Thread-safe once all routes are added.
class Router {
 public:
  using Handler = std::function<Answer(const RecordedRequest&)>;

  void Add(const std::string& method, const std::string& path, Handler handler);

  // Answers 404 for an unknown path, 405 with an Allow line for a method that the path does not
  // take, and 500 if the handler throws.
  Answer Handle(const RecordedRequest& request) const;

 private:
  struct Route {
    std::string method;
    std::string path;
    Handler handler;
  };

  std::vector<Route> routes_;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_ROUTER_H_
