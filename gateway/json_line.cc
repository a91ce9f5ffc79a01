#include "gateway/json_line.h"

#include <nlohmann/json.hpp>

#include "gateway/text.h"

namespace gateway {
namespace {

using Json = nlohmann::ordered_json;

Json ValueOf(const Field& field, const std::string& value, bool show_secrets) {
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
      if (!field.values.empty()) member = ValueOf(field, field.values[0], show_secrets);
      continue;
    }
    member = Json::array();
    for (const std::string& value : field.values) {
      member.push_back(ValueOf(field, value, show_secrets));
    }
  }
}

std::string Dump(const Json& object) {
  return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
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
    lines += JsonLine(Record{table.type, "", row, "", {}}, show_secrets);
  }
  return lines;
}

}  // namespace gateway
