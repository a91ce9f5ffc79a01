#include "gateway/console/console.h"

#include <utility>

#include "gateway/console/words.h"
#include "gateway/operations/result_names.h"
#include "gateway/output/nearest_word.h"
#include "gateway/output/text.h"

namespace gateway {
namespace {

std::string ArityError(const Command& command, size_t given) {
  const std::string usage = UsageOf(command);
  return command.name + " expects " + (usage.empty() ? "no argument" : usage) + ", got " +
         std::to_string(given) + (given == 1 ? " argument" : " arguments");
}

// An error repeats what was typed, but not a word that would fill the screen.
std::string ClipWords(std::string error, const std::vector<std::string>& words) {
  for (const std::string& word : words) {
    const size_t at = error.find(word);
    if (Clip(word) != word && at != std::string::npos) error.replace(at, word.size(), Clip(word));
  }
  return error;
}

// The first argument of the kind; "" when the command has none or it is missing.
std::string ArgumentOfKind(const Command& command, const std::vector<std::string>& words,
                           IdKind kind) {
  for (size_t i = 0; i < command.arguments.size() && i + 1 < words.size(); ++i) {
    if (command.arguments[i].kind == kind) return words[i + 1];
  }
  return "";
}

}  // namespace

Console::Console(ConsoleServices services, const Parts& parts)
    : services_(std::move(services)), parts_(parts) {}

Console::Outcome Console::Execute(const std::string& line) {
  Step step;
  Words words;
  if (!SplitWords(line, variables_, &words, &step.error)) {
    parts_.audit->NoteRefusedLine();
  } else if (!words.empty()) {
    step = Perform(words);
  }
  if (step.answer && !step.answer->is_status && step.answer->code != kAccountSuccess) {
    const std::string reason = Reason();
    step.error =
        words[0] + (reason.empty() ? " " + DescribeResult(step.answer->code) : ": " + reason);
  }
  if (parts_.audit->TakeFailure()) parts_.printer->Error(kAuditFailure);
  return Outcome{ClipWords(HideSecrets(step.error), words), step.quit};
}

Console::Outcome Console::Refuse(const std::string& error) {
  parts_.audit->NoteRefusedLine();
  return Outcome{.error = error};
}

std::string Console::Reason() const { return services_.explain ? services_.explain() : ""; }

std::string Console::Describe(int code) const {
  const std::string reason = Reason();
  return reason.empty() ? DescribeResult(code) : reason;
}

std::string Console::HideSecrets(const std::string& text) const {
  return parts_.printer->style().show_secrets ? text : variables_.HideSecrets(text);
}

const Command* Console::FindCommand(const std::string& name) {
  if (const Builtin* builtin = FindBuiltin(name)) return &builtin->command;
  for (const Command& command : OperationCommands()) {
    if (command.IsCalled(name)) return &command;
  }
  return nullptr;
}

const Console::Builtin* Console::FindBuiltin(const std::string& name) {
  for (const Builtin& builtin : Builtins()) {
    if (builtin.command.IsCalled(name)) return &builtin;
  }
  return nullptr;
}

std::vector<Command> Console::Commands() {
  std::vector<Command> commands;
  for (const Builtin& builtin : Builtins()) commands.push_back(builtin.command);
  commands.insert(commands.end(), OperationCommands().begin(), OperationCommands().end());
  return commands;
}

std::string Console::UnknownCommand(const std::string& word) {
  std::vector<std::string> names;
  for (const Command& command : Commands()) {
    names.push_back(command.name);
    if (!command.alias.empty()) names.push_back(command.alias);
  }
  const std::string nearest = NearestWord(word, names);
  return "unknown command \"" + word + "\"" +
         (nearest.empty() ? "" : "; did you mean " + nearest + "?");
}

Console::Step Console::Perform(const Words& words) {
  Step step;
  if (const Builtin* builtin = FindBuiltin(words[0])) {
    step = PerformBuiltin(*builtin, words);
    // What stands under expect is noted by itself.
    if (builtin->run != &Console::Expect) NoteInAudit(builtin->command, words, step);
  } else if (const Operation* operation = FindCommandOperation(words[0])) {
    const Command& command = *FindCommand(words[0]);
    step = PerformOperation(*operation, command, words);
    NoteInAudit(command, words, step);
  } else {
    parts_.audit->NoteRefusedLine();
    const std::string error = UnknownCommand(words[0]);
    step.error = error + (error.ends_with('?') ? " " : "; ") + "\"help\" lists them all";
  }
  return step;
}

Console::Step Console::PerformBuiltin(const Builtin& builtin, const Words& words) {
  const size_t given = words.size() - 1;
  if (!builtin.command.Accepts(given)) return Step{ArityError(builtin.command, given), {}};
  Step step = (this->*builtin.run)(words);
  if (step.answer) ShowAndRemember(builtin.command.name, *step.answer);
  return step;
}

Console::Step Console::PerformOperation(const Operation& operation, const Command& command,
                                        const Words& words) {
  const Words arguments(words.begin() + 1, words.end());
  if (!command.Accepts(arguments.size())) return Step{ArityError(command, arguments.size()), {}};
  Activity::Scope scope(*parts_.activity, command.name);
  Answer answer;
  std::string error;
  if (!operation.Call(*services_.accounts, arguments, &answer, &error)) {
    return Step{command.name + " expects " + UsageOf(command) + ": " + error, {}};
  }
  // Wait for the events of the operation, so that they always stand before its answer and a
  // script's output has one order.
  services_.flush_events();
  ShowAndRemember(command.name, answer);
  parts_.seen_ids->NoteFields(operation.outputs, answer.outputs);
  // The interface tells nobody when a session was kept alive; status shows what was seen here.
  if (operation.name == std::string("ResetCountForSessionMaintenance")) {
    parts_.seen_ids->NoteKept(arguments[0]);
  }
  return Step{"", answer};
}

void Console::ShowAndRemember(const std::string& name, const Answer& answer) {
  const std::string code = std::to_string(answer.code);
  const std::string message = answer.is_status ? "status" : ResultMessage(answer.code);
  parts_.printer->Show(
      Record{.type = "answer",
             .head = name + (answer.is_status ? ": status " + code : ": " + code + " " + message),
             .attributes = {{.name = "command", .values = {name}},
                            NumberField("code", answer.code),
                            {.name = "message", .values = {message}}},
             .nested = "outputs",
             .fields = answer.outputs});
  for (const Field& output : answer.outputs) {
    variables_.Set(output.name, JoinWords(output.values), output.secret);
  }
}

void Console::NoteInAudit(const Command& command, const Words& words, const Step& step) {
  Audit::CommandNote note;
  note.name = command.name;
  note.message = step.error.empty() ? "done" : "not done";
  // Words of a command that was refused may stand in each other's places, a code in the user's.
  if (step.answer || step.error.empty()) {
    note.user_uuid = variables_.HideSecrets(ArgumentOfKind(command, words, IdKind::kUserUuid));
    note.user_id = variables_.HideSecrets(ArgumentOfKind(command, words, IdKind::kUserId));
  }
  if (step.answer) {
    note.result = step.answer->code;
    note.message = step.answer->is_status ? "status" : ResultMessage(step.answer->code);
    for (const Field& output : step.answer->outputs) {
      if (output.name == parameter::kUserUuid.name && !output.values.empty()) {
        note.user_uuid = output.values[0];
      }
    }
  }
  parts_.audit->NoteCommand(note);
}

}  // namespace gateway
