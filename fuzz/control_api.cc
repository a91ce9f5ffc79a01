// Requests to the development cloud's control API: "METHOD TARGET", a line break and the body.
#include <nlohmann/json.hpp>

#include "devcloud/control/control.h"
#include "devcloud/control/state_json.h"
#include "devcloud/faults/faulty_reply.h"
#include "fuzz/fuzz.h"

namespace devcloud {
namespace {

RecordedRequest ReadRequest(const std::string& input) {
  const std::size_t line_end = std::min(input.find('\n'), input.size());
  const std::size_t space = std::min(input.find(' '), line_end);
  RecordedRequest request;
  request.raw = input;
  request.method = input.substr(0, space);
  request.target = input.substr(space, line_end - space);
  if (!request.target.empty()) request.target.erase(0, 1);
  if (line_end < input.size()) request.body = input.substr(line_end + 1);
  return request;
}

bool IsJson(const std::string& text) { return nlohmann::json::accept(text); }

void CheckReplies(const std::vector<Fault>& faults, const RecordedRequest& request) {
  for (const Fault& fault : faults) {
    if (fault.bytes > 4096) continue;  // filled up, which only takes time
    const Reply reply = MakeFaultyReply(fault, request, true, [] { return Answer(); });
    const bool may_be_empty = reply.delivery != Reply::Delivery::kWhole;
    fuzz::Require(may_be_empty || reply.bytes.starts_with("HTTP/1.1 "), "a reply has a head");
  }
}

void Run(const std::string& input) {
  const Urls urls{.http = "h", .https = "s", .api = "a"};
  Clock clock;
  Settings settings;
  Accounts accounts(clock, settings.tokens);
  Devices devices;
  RequestLog log;
  FaultList faults;
  std::atomic<bool> is_refusing = false;
  const ControlContext context{.urls = urls,
                               .accounts = accounts,
                               .devices = devices,
                               .log = log,
                               .faults = faults,
                               .clock = clock,
                               .is_refusing = is_refusing,
                               .end_fault = [&](std::uint64_t n) { return faults.Remove(n); },
                               .clear_faults = [&] { faults.Clear(); },
                               .refuse_connections = [&](bool refuse) { is_refusing = refuse; },
                               .settings = [&] { return settings; },
                               .change_settings = [&](const Settings& now) { settings = now; },
                               .reset = [&] { log.StartOver(); }};
  Router router;
  AddControlRoutes(context, &router);
  RecordedRequest request = ReadRequest(input);
  log.Add(&request);
  const std::string before = StateJson(context, -1) + SettingsJson(settings);
  const Answer answer = router.Handle(request);
  const std::string state = StateJson(context, -1);
  const std::string after = state + SettingsJson(settings);
  fuzz::Require(answer.status == 200 || after == before, "a refused request changes nothing");
  fuzz::Require(answer.status < 500, "no handler throws");
  fuzz::Require(answer.content_type != "application/json" || IsJson(answer.body),
                "an answer is JSON");
  fuzz::Require(IsJson(state), "the page can read the state");
  Settings read_again;
  std::string error;
  fuzz::Require(ParseSettings(SettingsJson(settings), &read_again, &error) &&
                    SettingsJson(read_again) == SettingsJson(settings),
                "settings that hold can be set");
  CheckReplies(faults.faults(), request);
}

}  // namespace
}  // namespace devcloud

void fuzz::Run(const std::string& input) { devcloud::Run(input); }
