#include "devcloud/http/router.h"

#include <exception>

namespace devcloud {
namespace {

Answer Run(const Router::Handler& handler, const RecordedRequest& request) {
  try {
    return handler(request);
  } catch (const std::exception& failure) {
    return {500, "text/plain", std::string(failure.what()) + "\n", {}};
  }
}

}  // namespace

void Router::Add(const std::string& method, const std::string& path, Handler handler) {
  routes_.push_back({method, path, std::move(handler)});
}

Answer Router::Handle(const RecordedRequest& request) const {
  const std::string path = PathOf(request);
  std::string allowed;
  for (const Route& route : routes_) {
    if (route.path != path) continue;
    if (route.method == request.method) return Run(route.handler, request);
    allowed += (allowed.empty() ? "" : ", ") + route.method;
  }
  if (allowed.empty()) return {404, "text/plain", "There is no such page.\n", {}};
  return {405, "text/plain", "Allowed here: " + allowed + "\n", {"Allow: " + allowed}};
}

}  // namespace devcloud
