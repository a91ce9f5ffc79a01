#include "devcloud/control/control.h"

#include <charconv>
#include <chrono>
#include <nlohmann/json.hpp>

#include "devcloud/control/openapi.h"
#include "devcloud/control/state_json.h"
#include "devcloud/faults/fault_json.h"
#include "devcloud/http/json_text.h"
#include "devcloud/http/origin.h"
#include "devcloud/page/page.h"

namespace devcloud {
namespace {

using Json = nlohmann::json;

Answer JsonAnswer(int status, const Json& body) {
  return {.status = status, .content_type = "application/json", .body = WriteJson(body, 2) + "\n"};
}

Answer Success() { return JsonAnswer(200, {{"result", "success"}}); }

Answer JsonError(int status, const std::string& error) {
  return JsonAnswer(status, {{"error", error}});
}

// The value of a field of the query, or "".
std::string QueryValue(const RecordedRequest& request, const std::string& name) {
  const std::size_t begin = request.target.find('?');
  if (begin == std::string::npos) return "";
  const auto fields = ParseForm(std::string_view(request.target).substr(begin + 1));
  if (!fields || !fields->contains(name)) return "";
  return fields->at(name);
}

// 0, which numbers no request and no fault, if the text is not a number.
std::uint64_t ParseNumber(const std::string& text) {
  std::uint64_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end ? number : 0;
}

Answer IssueCode(const ControlContext& context, const RecordedRequest& request) {
  const Json document = ParseJson(request.body);
  const Json user =
      document.is_object() && document.size() == 1 ? document.value("user", Json()) : Json();
  const std::string code = user.is_string() ? context.accounts.IssueCode(user) : "";
  if (code.empty()) return JsonError(400, "{\"user\": ID} is needed");
  return JsonAnswer(200, {{"code", code}});
}

Answer ShowExchange(const ControlContext& context, const RecordedRequest& request) {
  const std::string part = QueryValue(request, "part");
  if (part != "request" && part != "answer") {
    return JsonError(400, "part=request or part=answer is needed");
  }
  const auto found = context.log.Find(ParseNumber(QueryValue(request, "number")));
  if (!found) return JsonError(404, "there is no such request");
  const bool is_request = part == "request";
  if (!is_request && !found->answer) return JsonError(404, "there is no answer yet");
  // No browser may take a recorded page for one of the cloud's own and run it.
  return {.content_type = "application/octet-stream",
          .body = is_request ? found->raw : *found->answer,
          .header_lines = {"X-Content-Type-Options: nosniff", "Cache-Control: no-store"}};
}

Answer AddFault(const ControlContext& context, const RecordedRequest& request) {
  const Json document = ParseJson(request.body);
  if (IsRefusal(document)) {
    context.refuse_connections(true);
    return Success();
  }
  Fault fault;
  std::string error;
  if (!ParseFault(document, &fault, &error)) return JsonError(400, error);
  return JsonAnswer(200, {{"result", "success"}, {"number", context.faults.Add(fault)}});
}

Answer DeleteFaults(const ControlContext& context, const RecordedRequest& request) {
  const std::string number = QueryValue(request, "number");
  const std::string kind = QueryValue(request, "kind");
  if (!number.empty()) {
    return context.end_fault(ParseNumber(number)) ? Success()
                                                  : JsonError(404, "there is no such fault");
  }
  if (!kind.empty() && kind != "refuse") return JsonError(400, "kind can only be refuse");
  if (kind.empty()) context.clear_faults();
  context.refuse_connections(false);
  return Success();
}

Answer AdvanceClock(const ControlContext& context, const RecordedRequest& request) {
  constexpr int kMaxSeconds = 1'000'000'000;
  const Json document = ParseJson(request.body);
  const Json step = document.is_object() && document.size() == 1
                        ? document.value("advance_seconds", Json())
                        : Json();
  if (!step.is_number_integer() || step < 0 || step > kMaxSeconds) {
    return JsonError(400, "{\"advance_seconds\": N} is needed");
  }
  context.clock.Advance(std::chrono::seconds(step.get<int>()));
  return Success();
}

Answer ShowSettings(const ControlContext& context, const RecordedRequest&) {
  return {.content_type = "application/json", .body = SettingsJson(context.settings()) + "\n"};
}

Answer ChangeSettings(const ControlContext& context, const RecordedRequest& request) {
  Settings settings = context.settings();
  std::string error;
  if (!ParseSettings(request.body, &settings, &error)) return JsonError(400, error);
  context.change_settings(settings);
  return ShowSettings(context, request);
}

Answer Reset(const ControlContext& context, const RecordedRequest&) {
  context.reset();
  return Success();
}

Answer DeleteRequests(const ControlContext& context, const RecordedRequest&) {
  context.log.Clear();
  return Success();
}

Answer ShowState(const ControlContext& context, const RecordedRequest&) {
  return {.content_type = "application/json", .body = StateJson(context, 2) + "\n"};
}

Answer ShowRequests(const ControlContext& context, const RecordedRequest&) {
  return {.content_type = "application/json", .body = RequestsJson(context.log.requests()) + "\n"};
}

Answer Describe(const ControlContext&, const RecordedRequest&) {
  return {.content_type = "application/json", .body = kOpenApiJson};
}

Answer ShowRoutes(const Router& router) {
  Json routes = Json::array();
  for (const std::string& name : router.RouteNames()) {
    if (name.find(" /api/") != std::string::npos) routes.push_back(name);
  }
  return JsonAnswer(200, routes);
}

}  // namespace

bool IsControlRequest(const RecordedRequest& request) {
  const std::string path = PathOf(request);
  return path.starts_with("/api/") || path.starts_with("/page/") ||
         (path == "/" && request.method == "GET");
}

void AddControlRoutes(const ControlContext& context, Router* router) {
  AddPageRoutes(router);
  // One place for what every route of the API has in common.
  const auto add = [&context, router](const char* method, const char* path, auto handler) {
    router->Add(method, path, [&context, handler](const RecordedRequest& request) {
      // Browsers send such requests across sites without asking (CSRF); only the answer is kept
      // back.
      if (request.method != "GET" && IsFromForeignPage(request)) {
        return JsonError(403, "a page of another site may not change anything here");
      }
      return handler(context, request);
    });
  };
  add("GET", "/api/state", ShowState);
  add("POST", "/api/codes", IssueCode);
  add("GET", "/api/requests", ShowRequests);
  add("DELETE", "/api/requests", DeleteRequests);
  add("GET", "/api/exchange", ShowExchange);
  add("POST", "/api/faults", AddFault);
  add("DELETE", "/api/faults", DeleteFaults);
  add("POST", "/api/clock", AdvanceClock);
  add("GET", "/api/settings", ShowSettings);
  add("POST", "/api/settings", ChangeSettings);
  add("POST", "/api/reset", Reset);
  add("GET", "/api/openapi.json", Describe);
  router->Add("GET", "/api/routes",
              [router](const RecordedRequest&) { return ShowRoutes(*router); });
}

}  // namespace devcloud
