// The console: reads lines from people and scripts, runs the operations and a few commands around
// them, and shows what they answer. This class carries out one line after another.
#ifndef QORN_GATEWAY_CONSOLE_CONSOLE_H_
#define QORN_GATEWAY_CONSOLE_CONSOLE_H_

#include <optional>
#include <string>
#include <vector>

#include "gateway/console/commands.h"
#include "gateway/console/services.h"
#include "gateway/console/variables.h"
#include "gateway/operations/audit.h"
#include "gateway/operations/operations.h"
#include "gateway/operations/seen_ids.h"
#include "gateway/output/printer.h"
#include "gateway/process/activity.h"

namespace gateway {

// Not thread-safe: one thread executes the lines.
class Console {
 public:
  struct Parts {
    Printer* printer;
    Activity* activity;
    SeenIds* seen_ids;
    Audit* audit;
  };

  // Borrows the parts.
  Console(ConsoleServices services, const Parts& parts);

  struct Outcome {
    std::string error;  // one line; "" when the line did what it should
    bool quit = false;
  };

  // Shows the answer. An empty line or a comment is good. An operation that answers another code
  // than 1 is an error, unless `expect` asked for that code.
  Outcome Execute(const std::string& line);

  // For a line that cannot be executed: notes in the audit that there was one.
  Outcome Refuse(const std::string& error);

  // Whether the line may be kept in a file: it is a whole command, and no secret is typed in it. A
  // secret's place may hold a variable.
  bool MayBeKept(const std::string& line) const;

  // The words that may stand where the last word of `line` begins, all of them beginning as it
  // does: commands, IDs that were seen (escaped as they have to be typed), variables after "$".
  std::vector<std::string> Complete(const std::string& line) const;

  // All commands, in the order of the list that help shows.
  static std::vector<Command> Commands();

 private:
  using Words = std::vector<std::string>;

  struct Step {
    std::string error;
    std::optional<Answer> answer;
    bool quit = false;
  };

  // A command that is no operation. One without results cannot stand under expect.
  struct Builtin {
    Command command;
    Step (Console::*run)(const Words& words);
  };

  static const std::vector<Builtin>& Builtins();
  static const Builtin* FindBuiltin(const std::string& name);
  // Null for none.
  static const Command* FindCommand(const std::string& name);

  // Says that there is no such command, and which one may have been meant.
  static std::string UnknownCommand(const std::string& word);

  // Why the latest operation was not answered; "" when it was.
  std::string Reason() const;
  // The reason, or the code that was answered: "answered 3 (...)".
  std::string Describe(int code) const;

  // Shortens the secrets in a text, unless they are to be shown.
  std::string HideSecrets(const std::string& text) const;

  Step Perform(const Words& words);
  Step PerformBuiltin(const Builtin& builtin, const Words& words);
  Step PerformOperation(const Operation& operation, const Command& command, const Words& words);
  void ShowAndRemember(const std::string& name, const Answer& answer);
  void NoteInAudit(const Command& command, const Words& words, const Step& step);

  Step Expect(const Words& words);
  Step Friends(const Words& words);
  Step Help(const Words& words);
  Step Metrics(const Words& words);
  Step Quit(const Words& words);
  Step RequestCode(const Words& words);
  Step Say(const Words& words);
  Step Set(const Words& words);
  Step Status(const Words& words);
  Step Users(const Words& words);
  Step WaitNetwork(const Words& words);
  Step Watch(const Words& words);

  const ConsoleServices services_;
  const Parts parts_;
  Variables variables_;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_CONSOLE_CONSOLE_H_
