#include "gateway/console.h"

#include <algorithm>
#include <utility>

#include "gateway/result_names.h"
#include "gateway/text.h"
#include "gateway/words.h"

namespace gateway {
namespace {

size_t CountNames(const std::string& arguments) {
  if (arguments.empty()) return 0;
  return 1 + static_cast<size_t>(std::count(arguments.begin(), arguments.end(), ' '));
}

std::string ArityError(const std::string& name, const std::string& arguments, size_t given) {
  return name + " expects " + (arguments.empty() ? "no argument" : arguments) + ", got " +
         std::to_string(given) + (given == 1 ? " argument" : " arguments");
}

}  // namespace

Console::Console(ConsoleServices services, Printer* printer, Activity* activity)
    : services_(std::move(services)), printer_(printer), activity_(activity) {}

Console::Outcome Console::Execute(const std::string& line) {
  Step step;
  Words words;
  if (SplitWords(line, variables_, &words, &step.error) && !words.empty()) step = Perform(words);
  if (step.answer && !step.answer->is_status && step.answer->code != kAccountSuccess) {
    step.error = words[0] + " answered " + std::to_string(step.answer->code) + " (" +
                 ResultMessage(step.answer->code) + ")";
  }
  return Outcome{HideSecrets(step.error), step.quit};
}

std::string Console::HideSecrets(const std::string& text) const {
  return printer_->show_secrets() ? text : variables_.HideSecrets(text);
}

Console::Step Console::Perform(const Words& words) {
  if (const Builtin* builtin = FindBuiltin(words[0])) return PerformBuiltin(*builtin, words);
  if (const Operation* operation = FindOperation(words[0])) {
    return PerformOperation(*operation, words);
  }
  return Step{"unknown command \"" + words[0] + "\"; \"help\" lists them all", {}};
}

Console::Step Console::PerformBuiltin(const Builtin& builtin, const Words& words) {
  const size_t given = words.size() - 1;
  if (given < builtin.least || given > builtin.most) {
    return Step{ArityError(builtin.name, builtin.arguments, given), {}};
  }
  Step step = (this->*builtin.run)(words);
  if (step.answer) ShowAndRemember(builtin.name, *step.answer);
  return step;
}

Console::Step Console::PerformOperation(const Operation& operation, const Words& words) {
  const Words arguments(words.begin() + 1, words.end());
  if (arguments.size() != CountNames(operation.arguments)) {
    return Step{ArityError(operation.name, operation.arguments, arguments.size()), {}};
  }
  Activity::Scope scope(*activity_, operation.name);
  Answer answer;
  std::string error;
  if (!operation.call(*services_.accounts, arguments, &answer, &error)) {
    return Step{std::string(operation.name) + " expects " + operation.arguments + ": " + error, {}};
  }
  // The events of an operation stand before its answer, so that a script's output has one order.
  services_.flush_events();
  ShowAndRemember(operation.name, answer);
  return Step{"", answer};
}

void Console::ShowAndRemember(const std::string& name, const Answer& answer) {
  const std::string code = std::to_string(answer.code);
  printer_->Block(name + (answer.is_status ? ": status " + code
                                           : ": " + code + " " + ResultMessage(answer.code)),
                  answer.outputs);
  for (const Field& output : answer.outputs) {
    variables_.Set(output.name, JoinWords(output.values), output.secret);
  }
}

}  // namespace gateway
