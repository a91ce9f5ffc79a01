#include "gateway/console/console.h"

#include <algorithm>
#include <utility>

#include "gateway/console/words.h"
#include "gateway/operations/result_names.h"
#include "gateway/output/text.h"

namespace gateway {
namespace {

std::string ArityError(const CommandInfo& command, size_t given) {
  const std::string arguments = command.arguments;
  return command.name + std::string(" expects ") + (arguments.empty() ? "no argument" : arguments) +
         ", got " + std::to_string(given) + (given == 1 ? " argument" : " arguments");
}

bool IsName(const CommandInfo& command, const std::string& word) {
  return word == command.name || (*command.alias != '\0' && word == command.alias);
}

// An error repeats what was typed; a word that would fill the screen is cut off in it.
std::string ClipWords(std::string error, const std::vector<std::string>& words) {
  for (const std::string& word : words) {
    const size_t at = error.find(word);
    if (Clip(word) != word && at != std::string::npos) error.replace(at, word.size(), Clip(word));
  }
  return error;
}

// The argument's value; "" when the command has no such argument or it is missing.
std::string ArgumentNamed(const CommandInfo& command, const std::vector<std::string>& words,
                          const std::string& name) {
  const std::vector<std::string> names = SplitAtBlanks(command.arguments);
  const size_t at =
      static_cast<size_t>(std::find(names.begin(), names.end(), name) - names.begin());
  return at < names.size() && at + 1 < words.size() ? words[at + 1] : "";
}

}  // namespace

Console::Console(ConsoleServices services, const Parts& parts)
    : services_(std::move(services)), parts_(parts) {}

Console::Outcome Console::Execute(const std::string& line) {
  Step step;
  Words words;
  if (SplitWords(line, variables_, &words, &step.error) && !words.empty()) step = Perform(words);
  if (step.answer && !step.answer->is_status && step.answer->code != kAccountSuccess) {
    step.error = words[0] + " " + DescribeResult(step.answer->code);
  }
  if (parts_.audit->TakeFailure()) parts_.printer->Error(kAuditFailure);
  return Outcome{ClipWords(HideSecrets(step.error), words), step.quit};
}

std::string Console::HideSecrets(const std::string& text) const {
  return parts_.printer->style().show_secrets ? text : variables_.HideSecrets(text);
}

std::optional<CommandInfo> Console::FindCommand(const std::string& name) {
  if (const Builtin* builtin = FindBuiltin(name)) return *builtin;
  if (const Operation* operation = FindOperation(name)) return *operation;
  return std::nullopt;
}

const Console::Builtin* Console::FindBuiltin(const std::string& name) {
  const std::vector<Builtin>& builtins = Builtins();
  auto found = std::find_if(builtins.begin(), builtins.end(),
                            [&name](const Builtin& builtin) { return IsName(builtin, name); });
  return found == builtins.end() ? nullptr : &*found;
}

std::vector<CommandInfo> Console::Commands() {
  std::vector<CommandInfo> commands(Builtins().begin(), Builtins().end());
  commands.insert(commands.end(), Operations().begin(), Operations().end());
  return commands;
}

Console::Step Console::Perform(const Words& words) {
  Step step;
  if (const Builtin* builtin = FindBuiltin(words[0])) {
    step = PerformBuiltin(*builtin, words);
    // What stands under expect is noted by itself.
    if (builtin->run != &Console::Expect) NoteInAudit(*builtin, words, step);
  } else if (const Operation* operation = FindOperation(words[0])) {
    step = PerformOperation(*operation, words);
    NoteInAudit(*operation, words, step);
  } else {
    step.error = "unknown command \"" + words[0] + "\"; \"help\" lists them all";
  }
  return step;
}

Console::Step Console::PerformBuiltin(const Builtin& builtin, const Words& words) {
  const size_t given = words.size() - 1;
  if (given < builtin.least || given > builtin.most) return Step{ArityError(builtin, given), {}};
  Step step = (this->*builtin.run)(words);
  if (step.answer) ShowAndRemember(builtin.name, *step.answer);
  return step;
}

Console::Step Console::PerformOperation(const Operation& operation, const Words& words) {
  const Words arguments(words.begin() + 1, words.end());
  if (arguments.size() != SplitAtBlanks(operation.arguments).size()) {
    return Step{ArityError(operation, arguments.size()), {}};
  }
  Activity::Scope scope(*parts_.activity, operation.name);
  Answer answer;
  std::string error;
  if (!operation.call(*services_.accounts, arguments, &answer, &error)) {
    return Step{std::string(operation.name) + " expects " + operation.arguments + ": " + error, {}};
  }
  // The events of an operation stand before its answer, so that a script's output has one order.
  services_.flush_events();
  ShowAndRemember(operation.name, answer);
  if (operation.name == std::string("reset-count-for-session-maintenance")) {
    parts_.sightings->NoteKept(arguments[0]);
  }
  return Step{"", answer};
}

void Console::ShowAndRemember(const std::string& name, const Answer& answer) {
  const std::string code = std::to_string(answer.code);
  const std::string message = answer.is_status ? "status" : ResultMessage(answer.code);
  parts_.printer->Show(Record{
      "answer",
      name + (answer.is_status ? ": status " + code : ": " + code + " " + message),
      {{"command", {name}}, {"code", {code}, false, Field::Shape::kNumber}, {"message", {message}}},
      "outputs",
      answer.outputs});
  for (const Field& output : answer.outputs) {
    variables_.Set(output.name, JoinWords(output.values), output.secret);
  }
  parts_.sightings->NoteFields(answer.outputs);
}

void Console::NoteInAudit(const CommandInfo& command, const Words& words, const Step& step) {
  Audit::Command note;
  note.name = command.name;
  note.message = step.error.empty() ? "done" : "not done";
  // Words of a command that was refused may stand in each other's places, a code in the user's.
  if (step.answer || step.error.empty()) {
    note.user_uuid = variables_.HideSecrets(ArgumentNamed(command, words, "USER_UUID"));
    note.user_id = variables_.HideSecrets(ArgumentNamed(command, words, "USER_ID"));
  }
  if (step.answer) {
    note.result = step.answer->code;
    note.message = step.answer->is_status ? "status" : ResultMessage(step.answer->code);
    for (const Field& output : step.answer->outputs) {
      if (output.name == "user_uuid" && !output.values.empty()) note.user_uuid = output.values[0];
    }
  }
  parts_.audit->NoteCommand(note);
}

}  // namespace gateway
