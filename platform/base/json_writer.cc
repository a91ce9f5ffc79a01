#include "base/json_writer.h"

#include <nlohmann/json.hpp>

#include "base/json_reader.h"

namespace base {

namespace {

using nlohmann::json;

bool ConvertDictionary(const DictionaryValue& dictionary, int levels, json* out);
bool ConvertList(const ListValue& list, int levels, json* out);

// `levels` is how many levels of lists and dictionaries are left.
bool Convert(const Value& value, int levels, json* out) {
  bool boolean = false;
  int integer = 0;
  double number = 0;
  std::string text;
  const DictionaryValue* dictionary = nullptr;
  const ListValue* list = nullptr;
  if (value.GetAsDictionary(&dictionary)) return ConvertDictionary(*dictionary, levels, out);
  if (value.GetAsList(&list)) return ConvertList(*list, levels, out);
  if (value.GetAsString(&text)) {
    *out = text;
  } else if (value.GetAsBoolean(&boolean)) {
    *out = boolean;
  } else if (value.GetAsInteger(&integer)) {
    *out = integer;
  } else if (value.GetAsDouble(&number)) {
    *out = number;
  }
  return true;
}

bool ConvertDictionary(const DictionaryValue& dictionary, int levels, json* out) {
  if (levels == 0) return false;
  *out = json::object();
  for (const auto& [name, member] : dictionary.members()) {
    if (!Convert(*member, levels - 1, &(*out)[name])) return false;
  }
  return true;
}

bool ConvertList(const ListValue& list, int levels, json* out) {
  if (levels == 0) return false;
  *out = json::array();
  for (size_t i = 0; i < list.GetSize(); ++i) {
    const Value* element = nullptr;
    list.Get(i, &element);
    if (!Convert(*element, levels - 1, &out->emplace_back())) return false;
  }
  return true;
}

}  // namespace

bool JSONWriter::Write(const Value& value, std::string* text) {
  json converted;
  if (!Convert(value, JSONReader::kMaxLevels, &converted)) return false;
  constexpr int kNoIndent = -1;
  constexpr bool kEnsureAscii = false;
  *text = converted.dump(kNoIndent, ' ', kEnsureAscii, json::error_handler_t::replace);
  return true;
}

}  // namespace base
