#include "devcloud/http/router.h"

#include <exception>

namespace devcloud {
namespace {

Answer CallHandler(const Router::Handler& handler, const RecordedRequest& request) {
  try {
    return handler(request);
  } catch (const std::exception& failure) {
    return PlainText(500, failure.what());
  }
}

}  // namespace

void Router::Add(const std::string& method, const std::string& path, Handler handler) {
  routes_.push_back({method, path, std::move(handler)});
}

Answer Router::Handle(const RecordedRequest& request) const {
  const std::string path = PathOf(request);
  // A list is enough for about 20 routes, and keeps the order for the Allow line.
  std::string allowed;
  for (const Route& route : routes_) {
    if (route.path != path) continue;
    if (route.method == request.method) return CallHandler(route.handler, request);
    allowed += (allowed.empty() ? "" : ", ") + route.method;
  }
  if (allowed.empty()) return PlainText(404, "There is no such page.");
  Answer answer = PlainText(405, "Allowed here: " + allowed);
  answer.header_lines = {"Allow: " + allowed};
  return answer;
}

}  // namespace devcloud
