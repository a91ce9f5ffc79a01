#include "base/json_reader.h"

#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

namespace base {

namespace {

// Builds values from the parser's events. Returning false stops the parser.
//
// Events, because the JSON library's own tree allocates when it is destroyed, and ends the process
// if that fails.
class ValueBuilder : public nlohmann::json_sax<nlohmann::json> {
 public:
  std::unique_ptr<Value> TakeRoot() { return std::move(root_); }

  bool null() override { return Add(std::make_unique<Value>()); }
  bool boolean(bool value) override { return Add(std::make_unique<Value>(value)); }
  bool number_integer(number_integer_t value) override { return AddInteger(value); }
  bool number_unsigned(number_unsigned_t value) override { return AddInteger(value); }
  bool number_float(number_float_t value, const string_t& /*text*/) override {
    return Add(std::make_unique<Value>(value));
  }
  bool string(string_t& value) override { return Add(std::make_unique<Value>(std::move(value))); }
  bool binary(binary_t& /*value*/) override { return false; }

  bool start_object(size_t /*size*/) override {
    auto dictionary = std::make_unique<DictionaryValue>();
    Level level;
    level.dictionary = dictionary.get();
    return Open(std::move(dictionary), std::move(level));
  }
  bool key(string_t& name) override {
    levels_.back().key = std::move(name);
    return true;
  }
  bool end_object() override { return Close(); }

  bool start_array(size_t /*size*/) override {
    auto list = std::make_unique<ListValue>();
    Level level;
    level.list = list.get();
    return Open(std::move(list), std::move(level));
  }
  bool end_array() override { return Close(); }

  bool parse_error(size_t /*position*/, const std::string& /*token*/,
                   const nlohmann::detail::exception& /*error*/) override {
    return false;
  }

 private:
  // The dictionary or list that is being filled.
  struct Level {
    DictionaryValue* dictionary = nullptr;
    ListValue* list = nullptr;
    std::string key;
  };

  // Larger integers lose digits instead of making the whole text invalid.
  template <typename Integer>
  bool AddInteger(Integer value) {
    if (std::in_range<int>(value)) return Add(std::make_unique<Value>(static_cast<int>(value)));
    return Add(std::make_unique<Value>(static_cast<double>(value)));
  }

  bool Add(std::unique_ptr<Value> value) {
    if (levels_.empty()) {
      root_ = std::move(value);
    } else if (levels_.back().dictionary != nullptr) {
      levels_.back().dictionary->Set(levels_.back().key, std::move(value));
    } else {
      levels_.back().list->Append(std::move(value));
    }
    return true;
  }

  bool Open(std::unique_ptr<Value> value, Level level) {
    if (levels_.size() == JSONReader::kMaxLevels) return false;
    Add(std::move(value));
    levels_.push_back(std::move(level));
    return true;
  }

  bool Close() {
    levels_.pop_back();
    return true;
  }

  std::unique_ptr<Value> root_;
  std::vector<Level> levels_;
};

}  // namespace

std::unique_ptr<Value> JSONReader::Read(const std::string& text) {
  // The parser takes a zero byte for the end of the text and would accept what precedes it.
  if (text.find('\0') != std::string::npos) return nullptr;
  ValueBuilder builder;
  if (!nlohmann::json::sax_parse(text, &builder)) return nullptr;
  return builder.TakeRoot();
}

}  // namespace base
