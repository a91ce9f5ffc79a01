#include "base/json_writer.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>

#include "base/json_reader.h"

namespace base {

namespace {

// Only scalars go through the JSON library: its lists and objects allocate when they are destroyed,
// and end the process if that fails.
std::string Scalar(const nlohmann::json& value) {
  constexpr int kNoIndent = -1;
  constexpr bool kEnsureAscii = false;
  return value.dump(kNoIndent, ' ', kEnsureAscii, nlohmann::json::error_handler_t::replace);
}

// Whether the text needs no escaping. Most strings do not, and skip the library.
bool IsPlain(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; });
}

void AppendString(const std::string& text, std::string* out) {
  if (IsPlain(text)) {
    out->append(1, '"').append(text).append(1, '"');
  } else {
    *out += Scalar(text);
  }
}

bool AppendDictionary(const DictionaryValue& dictionary, int levels, std::string* out);
bool AppendList(const ListValue& list, int levels, std::string* out);

// `levels` is how many more levels of lists and dictionaries are allowed.
bool Append(const Value& value, int levels, std::string* out) {
  bool boolean = false;
  int integer = 0;
  double number = 0;
  std::string text;
  const DictionaryValue* dictionary = nullptr;
  const ListValue* list = nullptr;
  if (value.GetAsDictionary(&dictionary)) return AppendDictionary(*dictionary, levels, out);
  if (value.GetAsList(&list)) return AppendList(*list, levels, out);
  if (value.GetAsString(&text)) {
    AppendString(text, out);
  } else if (value.GetAsBoolean(&boolean)) {
    *out += Scalar(boolean);
  } else if (value.GetAsInteger(&integer)) {
    *out += Scalar(integer);
  } else if (value.GetAsDouble(&number)) {
    *out += Scalar(number);
  } else {
    *out += "null";
  }
  return true;
}

bool AppendDictionary(const DictionaryValue& dictionary, int levels, std::string* out) {
  if (levels == 0) return false;
  const char* separator = "{";
  for (const auto& [name, member] : dictionary.members()) {
    *out += std::exchange(separator, ",");
    AppendString(name, out);
    *out += ":";
    if (!Append(*member, levels - 1, out)) return false;
  }
  *out += dictionary.members().empty() ? "{}" : "}";
  return true;
}

bool AppendList(const ListValue& list, int levels, std::string* out) {
  if (levels == 0) return false;
  const char* separator = "[";
  for (size_t i = 0; i < list.GetSize(); ++i) {
    const Value* element = nullptr;
    list.Get(i, &element);
    *out += std::exchange(separator, ",");
    if (!Append(*element, levels - 1, out)) return false;
  }
  *out += list.GetSize() == 0 ? "[]" : "]";
  return true;
}

}  // namespace

bool JSONWriter::Write(const Value& value, std::string* text) {
  std::string written;
  if (!Append(value, JSONReader::kMaxLevels, &written)) return false;
  *text = std::move(written);
  return true;
}

}  // namespace base
