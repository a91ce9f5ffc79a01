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
  routes_.push_back({method, path, std::move(handler), nullptr});
}

void Router::AddStream(const std::string& method, const std::string& path,
                       std::function<Reply()> open) {
  routes_.push_back({method, path, nullptr, std::move(open)});
}

std::optional<Reply> Router::OpenStream(const RecordedRequest& request) const {
  for (const Route& route : routes_) {
    if (route.open && route.method == request.method && route.path == PathOf(request)) {
      return route.open();
    }
  }
  return std::nullopt;
}

Answer Router::Handle(const RecordedRequest& request) const {
  const std::string path = PathOf(request);
  // A list is enough for about 20 routes, and keeps the order for the Allow line.
  std::string allowed;
  for (const Route& route : routes_) {
    if (route.path != path) continue;
    if (route.handler && route.method == request.method) return CallHandler(route.handler, request);
    allowed += (allowed.empty() ? "" : ", ") + route.method;
  }
  if (allowed.empty()) return PlainText(404, "There is no such page.");
  Answer answer = PlainText(405, "Allowed here: " + allowed);
  answer.header_lines = {"Allow: " + allowed};
  return answer;
}

std::vector<std::string> Router::RouteNames() const {
  std::vector<std::string> names;
  for (const Route& route : routes_) names.push_back(route.method + " " + route.path);
  return names;
}

}  // namespace devcloud
