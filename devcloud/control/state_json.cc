#include "devcloud/control/state_json.h"

#include <chrono>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>
#include <vector>

#include "devcloud/faults/fault_json.h"
#include "devcloud/http/json_text.h"
#include "devcloud/services/secrets.h"

namespace devcloud {
namespace {

using Json = nlohmann::json;

std::int64_t Milliseconds(TimePoint time) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
}

using CredentialLists = std::map<std::string, Json>;  // by GUID

Json OptionalMilliseconds(const std::optional<TimePoint>& time) {
  return time ? Json(Milliseconds(*time)) : Json();
}

// `credentials` is a map of Credential or of RefreshToken.
template <class Map>
void AddCredentials(const char* kind, const Map& credentials, CredentialLists* lists) {
  for (const auto& [secret, credential] : credentials) {
    (*lists)[credential.guid].push_back({{"kind", kind},
                                         {"short", Shorten(secret)},
                                         {"expires_ms", OptionalMilliseconds(credential.expires)}});
  }
}

Json UserList(const AccountRecords& accounts) {
  CredentialLists lists;
  AddCredentials("code", accounts.codes, &lists);
  AddCredentials("access token", accounts.access_tokens, &lists);
  AddCredentials("refresh token", accounts.refresh_tokens, &lists);
  Json users = Json::array();
  for (const auto& [user_id, guid] : accounts.guids) {
    Json& credentials = lists[guid];
    if (credentials.is_null()) credentials = Json::array();
    users.push_back({{"user_id", user_id}, {"guid", guid}, {"credentials", credentials}});
  }
  return users;
}

Json DeviceList(const std::vector<Device>& devices) {
  Json list = Json::array();
  for (const Device& device : devices) {
    list.push_back({{"physical_address", device.physical_address},
                    {"peer_id", PeerIdOf(device.physical_address)},
                    {"users", device.users}});
  }
  return list;
}

Json FaultsJson(const std::vector<Fault>& faults) {
  Json list = Json::array();
  for (const Fault& fault : faults) {
    list.push_back({{"number", fault.number},
                    {"kind", NameOf(fault.kind)},
                    {"path", fault.path},
                    {"user", fault.user},
                    {"times", fault.times},
                    {"status", fault.status},
                    {"bytes", fault.bytes},
                    {"location", fault.location}});
  }
  return list;
}

Json SummaryJson(const RequestSummary& request) {
  Json json{{"number", request.number}, {"time_ms", Milliseconds(request.time)},
            {"tls", request.tls},       {"method", request.method},
            {"target", request.target}, {"request_bytes", request.request_bytes},
            {"fault", request.fault},   {"answer_bytes", nullptr},
            {"user", request.user},     {"answer_line", nullptr}};
  if (request.is_answered) {
    json["answer_bytes"] = request.answer_bytes;
    json["answer_line"] = request.answer_line;
  }
  return json;
}

}  // namespace

std::string StateJson(const ControlContext& context, int indent) {
  const Urls& urls = context.urls;
  return WriteJson({{"users", UserList(context.accounts.ValidRecords())},
                    {"devices", DeviceList(context.devices.devices())},
                    {"faults", FaultsJson(context.faults.faults())},
                    {"is_refusing", context.is_refusing.load()},
                    {"clock_ahead_seconds", context.clock.ahead().count()},
                    {"urls", {{"http", urls.http}, {"https", urls.https}, {"api", urls.api}}}},
                   indent);
}

std::string RequestChangesJson(const RequestChanges& changes) {
  Json requests = Json::array();
  for (const RequestSummary& request : changes.summaries) requests.push_back(SummaryJson(request));
  return WriteJson(
      {{"from_start", changes.from_start}, {"oldest", changes.oldest}, {"requests", requests}}, -1);
}

std::string RequestsJson(const std::vector<RecordedRequest>& requests) {
  Json list = Json::array();
  for (const RecordedRequest& request : requests) {
    Json json{{"number", request.number}, {"time_ms", Milliseconds(request.time)},
              {"method", request.method}, {"target", request.target},
              {"tls", request.tls},       {"header_lines", request.header_lines},
              {"body", request.body},     {"raw_base64", Base64(request.raw)},
              {"fault", request.fault},   {"answer_base64", nullptr},
              {"user", request.user}};
    if (request.answer) json["answer_base64"] = Base64(*request.answer);
    list.push_back(std::move(json));
  }
  return WriteJson(list, 2);
}

}  // namespace devcloud
