#include "gateway/output/json_lines.h"

#include <cstdio>
#include <nlohmann/json.hpp>

#include "gateway/output/text.h"

namespace gateway {
namespace {

using Json = nlohmann::ordered_json;

Json JsonValue(const Field& field, const std::string& value, bool show_secrets) {
  // A number that is not known is explained in words.
  if (field.shape == Field::Shape::kNumber) {
    Json number = Json::parse(value, nullptr, false);
    if (number.is_number()) return number;
  }
  if (field.shape == Field::Shape::kFlag) return value == "true";
  return field.secret && !show_secrets ? ShortenSecret(value) : value;
}

void Add(const std::vector<Field>& fields, bool show_secrets, Json* object) {
  for (const Field& field : fields) {
    Json& member = (*object)[field.name];
    if (field.shape != Field::Shape::kList) {
      if (!field.values.empty()) member = JsonValue(field, field.values[0], show_secrets);
      continue;
    }
    member = Json::array();
    for (const std::string& value : field.values) {
      member.push_back(JsonValue(field, value, show_secrets));
    }
  }
}

// JSON allows DEL and the C1 controls, U+0080 to U+009F, unescaped, but a terminal would obey them.
// They can only occur inside strings, so the whole text may be searched.
std::string EscapeControls(const std::string& json) {
  std::string text;
  for (size_t at = 0; at < json.size(); ++at) {
    const auto next = static_cast<unsigned char>(at + 1 < json.size() ? json[at + 1] : 0);
    const bool is_eight_bits = json[at] == '\xc2' && next < 0xa0;
    if (json[at] != '\x7f' && !is_eight_bits) {
      text += json[at];
      continue;
    }
    if (is_eight_bits) ++at;
    char escaped[8];
    std::snprintf(escaped, sizeof(escaped), "\\u%04x", static_cast<unsigned char>(json[at]));
    text += escaped;
  }
  return text;
}

std::string Dump(const Json& object) {
  return EscapeControls(object.dump(-1, ' ', false, Json::error_handler_t::replace)) + "\n";
}

}  // namespace

std::string JsonLine(const Record& record, bool show_secrets) {
  Json object = {{"type", record.type}};
  Add(record.attributes, show_secrets, &object);
  Json* fields = &object;
  if (!record.nested.empty()) {
    object[record.nested] = Json::object();
    fields = &object[record.nested];
  }
  Add(record.fields, show_secrets, fields);
  return Dump(object);
}

std::string JsonLines(const Table& table, bool show_secrets) {
  std::string lines;
  for (const std::vector<Field>& row : table.rows) {
    lines += JsonLine({.type = table.type, .attributes = row}, show_secrets);
  }
  return lines;
}

}  // namespace gateway
