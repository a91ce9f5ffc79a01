#include "gateway/console/help.h"

#include <algorithm>
#include <string>

#include "gateway/operations/result_names.h"
#include "gateway/output/json_lines.h"
#include "gateway/output/tables.h"
#include "gateway/output/text.h"

namespace gateway {
namespace {

constexpr size_t kUsageWidth = 46;

struct Argument {
  const char* name;
  const char* meaning;
};

constexpr Argument kArguments[] = {
    {"USER_ID", "the user's ID, as it signs in at the account server"},
    {"TARGET_USER_ID", "the ID of the user to be removed"},
    {"CODE", "an authorisation code of the account server, used once"},
    {"PASSWORD", "looked at for the system account only"},
    {"USER_UUID", "the user's UUID, from create-user, users or get-user-uuid-from-user-id"},
    {"SESSION_ID", "the session's ID, from sign-in or status"},
    {"FRIEND_UUID", "the friend's UUID, from friends or get-all-friends-uuid"},
    {"FRIEND_ID", "the friend's user ID"},
    {"FRIEND_GUID", "the friend's GUID at the account server"},
    {"FRIEND_PEER_ID", "the peer ID that the remote-access module reaches the friend by"},
    {"FRIEND_AUTH_CODE", "the code of the invitation, from add-friend-candidate"},
    {"FRIEND_DEVICE_MODEL_ID", "the model of the friend's gateway"},
    {"FRIEND_DEVICE_NAME", "the name of the friend's gateway"},
    {"FRIEND_DEVICE_ADDRESS", "the physical address of the friend's gateway, as text"},
    {"FIRST", "not looked at"},
    {"SECOND", "not looked at"},
    {"TYPE", "the number of the field"},
    {"VALUE", "the new value"},
    {"LIFETIME", "minutes; 0 and less end every session at the next tick"},
    {"MESSAGE", "a JSON document, in single quotes"},
    {"RESULT", "a number, a constant's name such as kAccountNoUser, or success"},
    {"COMMAND", "a command's name or alias"},
    {"COMMAND...", "a command with its arguments"},
    {"NAME", "letters, digits and \"_\", no digit first"},
    {"TEXT", "the variable's value"},
    {"TEXT...", "any words"},
    {"SECONDS", "how long; without it until Enter or, in a script, until the gateway stops"},
};

// "[USER_UUID]" names the same as "USER_UUID".
std::string MeaningOf(std::string name) {
  if (name.starts_with('[')) name = name.substr(1, name.size() - 2);
  for (const Argument& argument : kArguments) {
    if (name == argument.name) return argument.meaning;
  }
  return "";
}

std::string Usage(const CommandInfo& command) {
  std::string usage = command.name;
  if (*command.arguments != '\0') usage += std::string(" ") + command.arguments;
  return usage;
}

std::string ListLine(const CommandInfo& command) {
  const std::string usage = "  " + Usage(command);
  const std::string gap = usage.size() < kUsageWidth ? std::string(kUsageWidth - usage.size(), ' ')
                                                     : "\n" + std::string(kUsageWidth, ' ');
  return usage + gap + command.help + "\n";
}

Record MakeRecord(const CommandInfo& command) {
  return Record{"command",
                "",
                {{"command", {command.name}},
                 {"alias", {command.alias}},
                 {"group", {command.group}},
                 {"arguments", SplitAtBlanks(command.arguments), false, Field::Shape::kList},
                 {"help", {command.help}},
                 {"results", SplitAtBlanks(command.results), false, Field::Shape::kList}},
                "",
                {}};
}

}  // namespace

void ShowCommands(const std::vector<CommandInfo>& commands, Printer* printer) {
  const PrinterStyle& style = printer->style();
  std::string lines;
  std::vector<std::string> groups;
  for (const CommandInfo& command : commands) {
    if (style.json) lines += JsonLine(MakeRecord(command), false);
    if (std::find(groups.begin(), groups.end(), command.group) == groups.end()) {
      groups.emplace_back(command.group);
    }
  }
  for (const std::string& group : groups) {
    if (style.json) break;
    lines += Paint(group, Tone::kTitle, style.color_out) + "\n";
    for (const CommandInfo& command : commands) {
      if (group == command.group) lines += ListLine(command);
    }
  }
  if (!style.json) lines += "\"help COMMAND\" explains one: its arguments, results and alias.\n";
  printer->ShowLines(lines);
}

void ShowCommand(const CommandInfo& command, Printer* printer) {
  if (printer->style().json) {
    printer->Show(MakeRecord(command));
    return;
  }
  std::string lines = Paint(Usage(command), Tone::kTitle, printer->style().color_out) + "\n  " +
                      command.help + "\n";
  for (const std::string& name : SplitAtBlanks(command.arguments)) {
    lines += "  " + PadTo(name, 24) + MeaningOf(name) + "\n";
  }
  if (*command.alias != '\0') lines += std::string("  Alias: ") + command.alias + "\n";
  if (*command.results != '\0') lines += "  Results:\n";
  for (const std::string& code : SplitAtBlanks(command.results)) {
    int number = 0;
    ParseInt(code, &number);
    lines += "    " + PadTo(code, 4) + ResultMessage(number) + "\n";
  }
  printer->ShowLines(lines);
}

}  // namespace gateway
