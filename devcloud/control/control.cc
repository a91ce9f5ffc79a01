#include "devcloud/control/control.h"

#include <charconv>
#include <chrono>
#include <nlohmann/json.hpp>

#include "devcloud/control/state_json.h"
#include "devcloud/faults/fault_json.h"
#include "devcloud/http/json_text.h"
#include "devcloud/http/origin.h"
#include "devcloud/page/page.h"

namespace devcloud {
namespace {

using Json = nlohmann::json;

Answer JsonAnswer(int status, const Json& body) {
  return {status, "application/json", WriteJson(body, 2) + "\n", {}};
}

Answer Done() { return JsonAnswer(200, {{"result", "success"}}); }

Answer Refuse(int status, const std::string& error) {
  return JsonAnswer(status, {{"error", error}});
}

// The value of a query's field; "" when it is not there.
std::string QueryValue(const RecordedRequest& request, const std::string& name) {
  const std::size_t begin = request.target.find('?');
  if (begin == std::string::npos) return "";
  const auto fields = ParseForm(std::string_view(request.target).substr(begin + 1));
  if (!fields || !fields->contains(name)) return "";
  return fields->at(name);
}

// 0 when it is none.
std::uint64_t Number(const std::string& text) {
  std::uint64_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end ? number : 0;
}

Answer IssueCode(const ControlContext& context, const RecordedRequest& request) {
  const Json document = ParseJson(request.body);
  const Json user = document.is_object() ? document.value("user", Json()) : Json();
  const std::string code = user.is_string() ? context.accounts.IssueCode(user) : "";
  if (code.empty()) return Refuse(400, "{\"user\": ID} is needed");
  return JsonAnswer(200, {{"code", code}});
}

Answer ShowExchange(const ControlContext& context, const RecordedRequest& request) {
  const std::string part = QueryValue(request, "part");
  if (part != "request" && part != "answer") {
    return Refuse(400, "part=request or part=answer is needed");
  }
  const auto found = context.log.Find(Number(QueryValue(request, "number")));
  if (!found) return Refuse(404, "no such request is kept");
  const bool is_request = part == "request";
  if (!is_request && !found->answer) return Refuse(404, "there is no answer yet");
  return {200,
          "application/octet-stream",
          is_request ? found->raw : *found->answer,
          {"X-Content-Type-Options: nosniff", "Cache-Control: no-store"}};
}

Answer AddFault(const ControlContext& context, const RecordedRequest& request) {
  const Json document = ParseJson(request.body);
  if (document == Json{{"kind", "refuse"}}) {
    context.refuse_connections(true);
    return Done();
  }
  Fault fault;
  std::string error;
  if (!ParseFault(request.body, &fault, &error)) return Refuse(400, error);
  return JsonAnswer(200, {{"result", "success"}, {"number", context.faults.Add(fault)}});
}

Answer EndFaults(const ControlContext& context, const RecordedRequest& request) {
  const std::string number = QueryValue(request, "number");
  const std::string kind = QueryValue(request, "kind");
  if (!number.empty()) {
    return context.end_fault(Number(number)) ? Done() : Refuse(404, "no such fault is left");
  }
  if (!kind.empty() && kind != "refuse") return Refuse(400, "only kind=refuse can be ended so");
  if (kind.empty()) context.clear_faults();
  context.refuse_connections(false);
  return Done();
}

Answer MoveClock(const ControlContext& context, const RecordedRequest& request) {
  constexpr int kMaxSeconds = 1'000'000'000;
  const Json document = ParseJson(request.body);
  const Json step = document.is_object() ? document.value("advance_seconds", Json()) : Json();
  if (!step.is_number_integer() || step < 0 || step > kMaxSeconds) {
    return Refuse(400, "{\"advance_seconds\": N} is needed");
  }
  context.clock.Advance(std::chrono::seconds(step.get<int>()));
  return Done();
}

Answer ForgetRequests(const ControlContext& context, const RecordedRequest&) {
  context.log.Clear();
  return Done();
}

Answer ShowState(const ControlContext& context, const RecordedRequest&) {
  return {200, "application/json", StateJson(context, 2) + "\n", {}};
}

Answer ShowRequests(const ControlContext& context, const RecordedRequest&) {
  return {200, "application/json", RequestsJson(context.log.requests()) + "\n", {}};
}

}  // namespace

bool IsControlRequest(const RecordedRequest& request) {
  const std::string path = PathOf(request);
  return path.starts_with("/api/") || path.starts_with("/page/") ||
         (path == "/" && request.method == "GET");
}

void AddControlRoutes(const ControlContext& context, Router* router) {
  AddPageRoutes(router);
  const auto add = [&context, router](const char* method, const char* path, auto handler) {
    router->Add(method, path, [&context, handler](const RecordedRequest& request) {
      if (request.method != "GET" && IsFromForeignPage(request)) {
        return Refuse(403, "another web page may not change anything here");
      }
      return handler(context, request);
    });
  };
  add("GET", "/api/state", ShowState);
  add("POST", "/api/codes", IssueCode);
  add("GET", "/api/requests", ShowRequests);
  add("DELETE", "/api/requests", ForgetRequests);
  add("GET", "/api/exchange", ShowExchange);
  add("POST", "/api/faults", AddFault);
  add("DELETE", "/api/faults", EndFaults);
  add("POST", "/api/clock", MoveClock);
}

}  // namespace devcloud
