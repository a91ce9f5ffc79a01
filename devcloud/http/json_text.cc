#include "devcloud/http/json_text.h"

#include <nlohmann/json.hpp>

namespace devcloud {

using Json = nlohmann::json;

Json ParseJson(const std::string& text) {
  // The library parses without recursion but copies and compares values with it, so a deep value
  // would overflow the stack later. Its parser stops only for an exception.
  struct TooDeep {};
  const auto check_depth = [](int depth, Json::parse_event_t, const Json&) {
    if (depth >= kMaxJsonDepth) throw TooDeep();
    return true;
  };
  try {
    return Json::parse(text, check_depth, /*allow_exceptions=*/false);
  } catch (const TooDeep&) {
    return Json::value_t::discarded;
  }
}

std::string WriteJson(const Json& value, int indent) {
  return value.dump(indent, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace);
}

}  // namespace devcloud
