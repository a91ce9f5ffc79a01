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

inline void Fill(const Unwritten& unwritten, std::string* text) { *text = unwritten.text; }
inline void Fill(const Unwritten& unwritten, std::vector<std::string>* texts) {
  if (!unwritten.text.empty()) *texts = {unwritten.text};
}
inline void Fill(const Unwritten& /*unwritten*/, int* /*number*/) {}
inline void Fill(const Unwritten& unwritten, bool* flag) { *flag = unwritten.flag; }

// Collects the outputs that a call wrote: all of them on success, on failure those that changed.
struct OutputCollector {
  bool success;
  const Unwritten& unwritten;
  std::vector<Field>* fields;

  void Add(const Parameter& output, const std::string& value) {
    if (success || value != unwritten.text) Put(output, {value}, Field::Shape::kText);
  }
  void Add(const Parameter& output, const std::vector<std::string>& values) {
    std::vector<std::string> before;
    Fill(unwritten, &before);
    if (success || values != before) Put(output, values, Field::Shape::kList);
  }
  void Add(const Parameter& output, int value) {
    if (success) Put(output, {std::to_string(value)}, Field::Shape::kNumber);
  }
  // The one flag of the interface says why an operation failed and is not written on success.
  void Add(const Parameter& output, bool value) {
    if (!success || value != unwritten.flag) {
      Put(output, {value ? "true" : "false"}, Field::Shape::kFlag);
    }
  }

 private:
  void Put(const Parameter& output, const std::vector<std::string>& values, Field::Shape shape) {
    fields->push_back(
        {.name = output.name, .values = values, .secret = output.secret, .shape = shape});
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

template <typename Value>
constexpr Field::Shape ShapeOf() {
  if constexpr (std::is_same_v<Value, bool>) return Field::Shape::kFlag;
  if constexpr (std::is_same_v<Value, int>) return Field::Shape::kNumber;
  if constexpr (std::is_same_v<Value, std::vector<std::string>>) return Field::Shape::kList;
  return Field::Shape::kText;
}

template <auto kMethod>
struct Caller;

// Parameters by pointer are outputs; the others are arguments, read from `words`.
template <typename... Parameters, AccountResult (AccountManager::*kMethod)(Parameters...)>
struct Caller<kMethod> {
  static constexpr size_t kOutputs = (size_t{0} + ... + (std::is_pointer_v<Parameters> ? 1 : 0));
  static constexpr size_t kArguments = sizeof...(Parameters) - kOutputs;

  static std::vector<Field::Shape> ArgumentShapes() { return Shapes(false); }
  static std::vector<Field::Shape> OutputShapes() { return Shapes(true); }

  // An Operation::Invoker.
  static bool Call(const Operation& operation, AccountManager& accounts,
                   const std::vector<std::string>& words, Answer* answer, std::string* error) {
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
      if constexpr (std::is_pointer_v<Parameter>) collector.Add(operation.outputs[next++], slot);
    });
    return true;
  }

 private:
  static std::vector<Field::Shape> Shapes([[maybe_unused]] bool of_outputs) {
    std::vector<Field::Shape> shapes;
    ((std::is_pointer_v<Parameters> == of_outputs ? shapes.push_back(ShapeOf<Slot<Parameters>>())
                                                  : void()),
     ...);
    return shapes;
  }

  template <typename Visitor>
  static void Visit(std::tuple<Slot<Parameters>...>& slots, Visitor visitor) {
    std::apply([&visitor](auto&... slot) { (visitor.template operator()<Parameters>(slot), ...); },
               slots);
  }
};

}  // namespace gateway::internal

#endif  // QORN_GATEWAY_OPERATIONS_OPERATION_CALL_H_
