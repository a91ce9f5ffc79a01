#include "base/values.h"

#include <cassert>
#include <utility>

namespace base {

Value::~Value() = default;

bool Value::IsNull() const { return std::holds_alternative<std::monostate>(scalar_); }

bool Value::GetAsBoolean(bool* out) const {
  const bool* value = std::get_if<bool>(&scalar_);
  if (value != nullptr) *out = *value;
  return value != nullptr;
}

bool Value::GetAsInteger(int* out) const {
  const int* value = std::get_if<int>(&scalar_);
  if (value != nullptr) *out = *value;
  return value != nullptr;
}

// JSON does not tell 5 from 5.0, so whoever expects a double gets both.
bool Value::GetAsDouble(double* out) const {
  int integer = 0;
  if (GetAsInteger(&integer)) {
    *out = integer;
    return true;
  }
  const double* value = std::get_if<double>(&scalar_);
  if (value != nullptr) *out = *value;
  return value != nullptr;
}

bool Value::GetAsString(std::string* out) const {
  const std::string* value = std::get_if<std::string>(&scalar_);
  if (value != nullptr) *out = *value;
  return value != nullptr;
}

bool Value::GetAsDictionary(const DictionaryValue** /*out*/) const { return false; }

bool Value::GetAsList(const ListValue** /*out*/) const { return false; }

DictionaryValue::~DictionaryValue() = default;

bool DictionaryValue::Get(const std::string& key, const Value** out) const {
  const auto member = members_.find(key);
  if (member == members_.end()) return false;
  *out = member->second.get();
  return true;
}

bool DictionaryValue::GetInteger(const std::string& key, int* out) const {
  const Value* value = nullptr;
  return Get(key, &value) && value->GetAsInteger(out);
}

bool DictionaryValue::GetString(const std::string& key, std::string* out) const {
  const Value* value = nullptr;
  return Get(key, &value) && value->GetAsString(out);
}

bool DictionaryValue::GetDictionary(const std::string& key, const DictionaryValue** out) const {
  const Value* value = nullptr;
  return Get(key, &value) && value->GetAsDictionary(out);
}

bool DictionaryValue::GetList(const std::string& key, const ListValue** out) const {
  const Value* value = nullptr;
  return Get(key, &value) && value->GetAsList(out);
}

void DictionaryValue::Set(const std::string& key, std::unique_ptr<Value> value) {
  assert(value != nullptr);
  members_[key] = std::move(value);
}

void DictionaryValue::SetString(const std::string& key, const std::string& value) {
  Set(key, std::make_unique<Value>(value));
}

bool DictionaryValue::IsNull() const { return false; }

bool DictionaryValue::GetAsDictionary(const DictionaryValue** out) const {
  *out = this;
  return true;
}

ListValue::~ListValue() = default;

bool ListValue::Get(size_t index, const Value** out) const {
  if (index >= elements_.size()) return false;
  *out = elements_[index].get();
  return true;
}

bool ListValue::GetString(size_t index, std::string* out) const {
  const Value* value = nullptr;
  return Get(index, &value) && value->GetAsString(out);
}

bool ListValue::GetDictionary(size_t index, const DictionaryValue** out) const {
  const Value* value = nullptr;
  return Get(index, &value) && value->GetAsDictionary(out);
}

void ListValue::Append(std::unique_ptr<Value> value) {
  assert(value != nullptr);
  elements_.push_back(std::move(value));
}

bool ListValue::IsNull() const { return false; }

bool ListValue::GetAsList(const ListValue** out) const {
  *out = this;
  return true;
}

}  // namespace base
