#include "devcloud/control.h"

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>

#include "devcloud/fault_json.h"
#include "devcloud/page.h"
#include "devcloud/secrets.h"

namespace devcloud {
namespace {

using Json = nlohmann::json;

Answer JsonAnswer(int status, const Json& body) {
  // What clients sent need not be UTF-8.
  return {status,
          "application/json",
          body.dump(2, ' ', false, Json::error_handler_t::replace) + "\n",
          {}};
}

Answer Done() { return JsonAnswer(200, {{"result", "success"}}); }

Answer Bad(const std::string& error) { return JsonAnswer(400, {{"error", error}}); }

Answer ShowState(const ControlContext& context) {
  Json users = Json::array();
  Json devices = Json::array();
  Json faults = Json::array();
  for (const auto& [user_id, guid] : context.accounts.records().guids) {
    users.push_back({{"user_id", user_id}, {"guid", guid}});
  }
  for (const Device& device : context.devices.devices()) {
    devices.push_back({{"physical_address", device.physical_address},
                       {"peer_id", PeerIdOf(device.physical_address)},
                       {"users", device.users}});
  }
  for (const Fault& fault : context.faults.faults()) {
    faults.push_back({{"kind", NameOf(fault.kind)}, {"path", fault.path}, {"times", fault.times}});
  }
  return JsonAnswer(200, {{"users", users}, {"devices", devices}, {"faults", faults}});
}

Answer ShowRequests(const ControlContext& context) {
  Json requests = Json::array();
  for (const RecordedRequest& request : context.log.requests()) {
    requests.push_back({{"method", request.method},
                        {"target", request.target},
                        {"tls", request.tls},
                        {"header_lines", request.header_lines},
                        {"body", request.body},
                        {"raw_base64", Base64(request.raw)}});
  }
  return JsonAnswer(200, requests);
}

Answer AddFault(const ControlContext& context, const RecordedRequest& request) {
  const Json document = Json::parse(request.body, nullptr, false);
  if (document == Json{{"kind", "refuse"}}) {
    context.refuse_connections(true);
    return Done();
  }
  Fault fault;
  std::string error;
  if (!ParseFault(request.body, &fault, &error)) return Bad(error);
  context.faults.Add(fault);
  return Done();
}

Answer MoveClock(const ControlContext& context, const RecordedRequest& request) {
  constexpr int kMaxSeconds = 1'000'000'000;
  const Json document = Json::parse(request.body, nullptr, false);
  const Json step = document.is_object() ? document.value("advance_seconds", Json()) : Json();
  if (!step.is_number_integer() || step < 0 || step > kMaxSeconds) {
    return Bad("{\"advance_seconds\": N} is needed");
  }
  context.clock.Advance(std::chrono::seconds(step.get<int>()));
  return Done();
}

}  // namespace

bool IsControlRequest(const RecordedRequest& request) {
  const std::string path = PathOf(request);
  return path.starts_with("/api/") || (path == "/" && request.method == "GET");
}

void AddControlRoutes(const ControlContext& context, Router* router) {
  router->Add("GET", "/", [&context](const RecordedRequest&) {
    return MakePage(context.accounts.records(), context.devices.devices(), context.log.requests());
  });
  router->Add("GET", "/api/state",
              [&context](const RecordedRequest&) { return ShowState(context); });
  router->Add("GET", "/api/requests",
              [&context](const RecordedRequest&) { return ShowRequests(context); });
  router->Add("DELETE", "/api/requests", [&context](const RecordedRequest&) {
    context.log.Clear();
    return Done();
  });
  router->Add("POST", "/api/faults",
              [&context](const RecordedRequest& request) { return AddFault(context, request); });
  router->Add("DELETE", "/api/faults", [&context](const RecordedRequest&) {
    context.clear_faults();
    context.refuse_connections(false);
    return Done();
  });
  router->Add("POST", "/api/clock",
              [&context](const RecordedRequest& request) { return MoveClock(context, request); });
}

}  // namespace devcloud
