#include "devcloud/faults/fault_json.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace devcloud {
namespace {

using Json = nlohmann::json;

constexpr std::pair<const char*, Fault::Kind> kKinds[] = {
    {"status", Fault::Kind::kStatus},
    {"body", Fault::Kind::kBody},
    {"raw", Fault::Kind::kRaw},
    {"reset_after", Fault::Kind::kResetAfter},
    {"truncate_after", Fault::Kind::kTruncateAfter},
    {"stall", Fault::Kind::kStall},
    {"drip", Fault::Kind::kDrip},
    {"redirect", Fault::Kind::kRedirect},
};

bool ReadKind(const Json& value, Fault::Kind* kind) {
  for (const auto& [name, known] : kKinds) {
    if (value != name) continue;
    *kind = known;
    return true;
  }
  return false;
}

bool ReadText(const Json& value, std::string* text) {
  if (!value.is_string()) return false;
  *text = value.get<std::string>();
  return true;
}

bool ReadNumber(const Json& value, int minimum, int maximum, int* number) {
  if (!value.is_number_integer() || value < minimum || value > maximum) return false;
  *number = value.get<int>();
  return true;
}

bool ReadLines(const Json& value, std::vector<std::string>* lines) {
  if (!value.is_array()) return false;
  for (const Json& line : value) {
    if (!ReadText(line, &lines->emplace_back())) return false;
  }
  return true;
}

bool ReadMember(const std::string& name, const Json& value, Fault* fault) {
  constexpr int kMaxTimes = 1'000'000;
  constexpr int kMaxBytes = 64 << 20;
  if (name == "path") return ReadText(value, &fault->path);
  if (name == "user") return ReadText(value, &fault->user);
  if (name == "times") return ReadNumber(value, -1, kMaxTimes, &fault->times) && fault->times != 0;
  if (name == "kind") return ReadKind(value, &fault->kind);
  if (name == "status") return ReadNumber(value, 200, 599, &fault->status);
  if (name == "content_type") return ReadText(value, &fault->content_type);
  if (name == "body") return ReadText(value, &fault->body);
  if (name == "location") return ReadText(value, &fault->location);
  if (name == "header_lines") return ReadLines(value, &fault->header_lines);
  int bytes = 0;
  if (name != "bytes" || !ReadNumber(value, 0, kMaxBytes, &bytes)) return false;
  fault->bytes = static_cast<std::size_t>(bytes);
  return true;
}

}  // namespace

bool IsRefusal(const Json& value) { return value == Json{{"kind", "refuse"}}; }

bool ParseFault(const Json& value, Fault* fault, std::string* error) {
  if (!value.is_object() || !value.contains("kind")) {
    *error = "a JSON object with a member \"kind\" is needed";
    return false;
  }
  // A misspelt member is an error: a test would otherwise wait for a fault that never comes.
  for (const auto& [name, member] : value.items()) {
    if (ReadMember(name, member, fault)) continue;
    *error = "unknown member or bad value: " + name;
    return false;
  }
  return true;
}

const char* NameOf(Fault::Kind kind) {
  for (const auto& [name, known] : kKinds) {
    if (known == kind) return name;
  }
  return "";
}

}  // namespace devcloud
