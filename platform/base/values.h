// A tree of JSON values. A value owns everything below it. Pointers from getters are borrowed, and
// valid until their owner is destroyed or the member is replaced. Not thread-safe: either one
// thread writes or any number read.
#ifndef QORN_PLATFORM_BASE_VALUES_H_
#define QORN_PLATFORM_BASE_VALUES_H_

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace base {

class DictionaryValue;
class ListValue;

// Null, a boolean, an integer, a double or a string; subclasses hold lists and dictionaries. Every
// getter returns false and leaves its output untouched if the value is of another type.
class Value {
 public:
  Value() = default;  // Null.
  explicit Value(bool value) : scalar_(value) {}
  explicit Value(int value) : scalar_(value) {}
  explicit Value(double value) : scalar_(value) {}
  explicit Value(std::string value) : scalar_(std::move(value)) {}
  explicit Value(const char* value) : scalar_(std::string(value)) {}
  virtual ~Value();
  Value(const Value&) = delete;
  Value& operator=(const Value&) = delete;

  virtual bool IsNull() const;
  bool GetAsBoolean(bool* out) const;
  bool GetAsInteger(int* out) const;
  // Also for an integer.
  bool GetAsDouble(double* out) const;
  bool GetAsString(std::string* out) const;
  virtual bool GetAsDictionary(const DictionaryValue** out) const;
  virtual bool GetAsList(const ListValue** out) const;

 private:
  std::variant<std::monostate, bool, int, double, std::string> scalar_;
};

// Members by name. Names are taken literally: dots have no meaning. Getters return false and leave
// the output untouched if there is no such member or it is of another type.
class DictionaryValue : public Value {
 public:
  using Members = std::map<std::string, std::unique_ptr<Value>>;

  DictionaryValue() = default;
  ~DictionaryValue() override;

  bool Get(const std::string& key, const Value** out) const;
  bool GetInteger(const std::string& key, int* out) const;
  bool GetString(const std::string& key, std::string* out) const;
  bool GetDictionary(const std::string& key, const DictionaryValue** out) const;
  bool GetList(const std::string& key, const ListValue** out) const;
  // In byte order of their names.
  const Members& members() const { return members_; }

  // Adds a member, or replaces the one with that name. `value` must not be null.
  void Set(const std::string& key, std::unique_ptr<Value> value);
  void SetString(const std::string& key, const std::string& value);

  bool IsNull() const override;
  bool GetAsDictionary(const DictionaryValue** out) const override;

 private:
  Members members_;
};

// Getters return false and leave the output untouched if the list is too short or the element is of
// another type.
class ListValue : public Value {
 public:
  ListValue() = default;
  ~ListValue() override;

  size_t GetSize() const { return elements_.size(); }
  bool Get(size_t index, const Value** out) const;
  bool GetString(size_t index, std::string* out) const;
  bool GetDictionary(size_t index, const DictionaryValue** out) const;

  // `value` must not be null.
  void Append(std::unique_ptr<Value> value);

  bool IsNull() const override;
  bool GetAsList(const ListValue** out) const override;

 private:
  std::vector<std::unique_ptr<Value>> elements_;
};

}  // namespace base

#endif  // QORN_PLATFORM_BASE_VALUES_H_
