// The console's commands as people see them: one for each operation, in kebab case, and what its
// arguments are called here.
#ifndef QORN_GATEWAY_CONSOLE_COMMANDS_H_
#define QORN_GATEWAY_CONSOLE_COMMANDS_H_

#include <string>
#include <vector>

#include "gateway/operations/operations.h"

namespace gateway {

struct CommandArgument {
  // As in parameters.h, nothing has a default.
  CommandArgument(std::string name, std::string text, IdKind id_kind, Secrecy secrecy);
  // "USER_UUID" for user_uuid, with a word on where a person gets it from.
  explicit CommandArgument(const Parameter& parameter);

  CommandArgument Optional() const;
  bool is_optional() const { return usage.starts_with('['); }
  bool is_repeated() const { return usage.ends_with("..."); }

  // "USER_ID", "[USER_UUID]" if it may be left out, "TEXT..." if more may follow.
  std::string usage;
  std::string meaning;
  IdKind kind;
  bool secret;
};

struct Command {
  // By its name or its alias.
  bool IsCalled(const std::string& word) const;
  bool Accepts(size_t argument_count) const;

  std::string name;        // in kebab case
  std::string alias = {};  // a shorter name; "" for none
  std::string group;       // the heading in the list of commands
  std::vector<CommandArgument> arguments = {};
  std::string help;               // one line
  std::vector<int> results = {};  // the codes that it can answer; none when it answers none
};

// "USER_ID CODE"
std::string UsageOf(const Command& command);

// The commands of the operations, in the order of Operations().
const std::vector<Command>& OperationCommands();

// The operation behind a command's name or alias; null for none.
const Operation* FindCommandOperation(const std::string& word);

}  // namespace gateway

#endif  // QORN_GATEWAY_CONSOLE_COMMANDS_H_
