// Turns a member function of the account interface into a call with words.
#ifndef QORN_GATEWAY_OPERATIONS_OPERATION_CALL_H_
#define QORN_GATEWAY_OPERATIONS_OPERATION_CALL_H_

#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "gateway/operations/operations.h"
#include "gateway/operations/result_names.h"

namespace gateway::internal {

// Reads the words that an operation takes as inputs, first to last.
struct WordReader {
  const std::vector<std::string>& words;
  size_t next = 0;
  std::string error;

  void Read(std::string* input) { *input = words[next++]; }
  void Read(int* input) {
    const std::string& word = words[next++];
    if (!ParseInt(word, input)) error = "\"" + word + "\" is not a whole number";
  }
};

// Tokens and the friend's code open accounts: whoever reads them can use them.
inline bool IsSecret(const std::string& name) {
  return name == "access_token" || name == "refresh_token" || name == "friend_auth_code";
}

inline void Fill(const Unwritten& unwritten, std::string* text) { *text = unwritten.text; }
inline void Fill(const Unwritten& unwritten, std::vector<std::string>* texts) {
  if (!unwritten.text.empty()) *texts = {unwritten.text};
}
inline void Fill(const Unwritten& /*unwritten*/, int* /*number*/) {}
inline void Fill(const Unwritten& unwritten, bool* flag) { *flag = unwritten.flag; }

struct OutputCollector {
  bool success;
  const Unwritten& unwritten;
  std::vector<Field>* fields;

  void Add(const std::string& name, const std::string& value) {
    if (success || value != unwritten.text) Put(name, {value}, Field::Shape::kText);
  }
  void Add(const std::string& name, const std::vector<std::string>& values) {
    std::vector<std::string> before;
    Fill(unwritten, &before);
    if (success || values != before) Put(name, values, Field::Shape::kList);
  }
  void Add(const std::string& name, int value) {
    if (success) Put(name, {std::to_string(value)}, Field::Shape::kNumber);
  }
  // The one flag of the interface says why an operation failed and is not written on success.
  void Add(const std::string& name, bool value) {
    if (!success || value != unwritten.flag) {
      Put(name, {value ? "true" : "false"}, Field::Shape::kFlag);
    }
  }

 private:
  void Put(const std::string& name, const std::vector<std::string>& values, Field::Shape shape) {
    fields->push_back(Field{name, values, IsSecret(name), shape});
  }
};

// The place that a parameter is read into or written to: its type without reference and pointer.
template <typename Parameter>
using Slot = std::remove_const_t<std::remove_pointer_t<std::remove_reference_t<Parameter>>>;

template <typename Parameter>
auto Pass(Slot<Parameter>& slot) {
  if constexpr (std::is_pointer_v<Parameter>) {
    return &slot;
  } else {
    return slot;
  }
}

template <auto kMethod>
struct Caller;

// Parameters by pointer are outputs, named in order by `names`; the others are read from `words`.
template <typename... Parameters, AccountResult (AccountManager::*kMethod)(Parameters...)>
struct Caller<kMethod> {
  static constexpr size_t kOutputs = (size_t{0} + ... + (std::is_pointer_v<Parameters> ? 1 : 0));

  static bool Call(AccountManager& accounts, const std::vector<std::string>& words,
                   const std::vector<std::string>& names, Answer* answer, std::string* error) {
    std::tuple<Slot<Parameters>...> slots{};
    WordReader reader{words, 0, ""};
    Visit(slots, [&reader, answer]<typename Parameter>(Slot<Parameter>& slot) {
      if constexpr (std::is_pointer_v<Parameter>) {
        Fill(answer->unwritten, &slot);
      } else {
        reader.Read(&slot);
      }
    });
    if (!reader.error.empty()) {
      *error = reader.error;
      return false;
    }
    answer->code = std::apply(
        [&accounts](auto&... slot) { return (accounts.*kMethod)(Pass<Parameters>(slot)...); },
        slots);
    OutputCollector collector{answer->code == kAccountSuccess, answer->unwritten, &answer->outputs};
    size_t next = 0;
    Visit(slots, [&]<typename Parameter>(Slot<Parameter>& slot) {
      if constexpr (std::is_pointer_v<Parameter>) collector.Add(names[next++], slot);
    });
    return true;
  }

 private:
  template <typename Visitor>
  static void Visit(std::tuple<Slot<Parameters>...>& slots, Visitor visitor) {
    std::apply([&visitor](auto&... slot) { (visitor.template operator()<Parameters>(slot), ...); },
               slots);
  }
};

}  // namespace gateway::internal

#endif  // QORN_GATEWAY_OPERATIONS_OPERATION_CALL_H_
