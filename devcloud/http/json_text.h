#ifndef QORN_DEVCLOUD_HTTP_JSON_TEXT_H_
#define QORN_DEVCLOUD_HTTP_JSON_TEXT_H_

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace devcloud {

// Arrays and objects nested deeper than this are not read.
constexpr int kMaxJsonDepth = 32;

// Parses a JSON text from outside. Text that is not JSON or nests too deep gives a discarded value
// (`is_discarded()`), which is neither an object nor anything else, and is never built.
nlohmann::json ParseJson(const std::string& text);

// The JSON text of a value; with a negative indent, on one line. Bytes that are not UTF-8, which
// clients may have sent, become U+FFFD.
std::string WriteJson(const nlohmann::json& value, int indent = -1);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_JSON_TEXT_H_
