#include "gateway/console/help.h"

#include <algorithm>
#include <string>

#include "gateway/operations/result_names.h"
#include "gateway/output/json_lines.h"
#include "gateway/output/tables.h"
#include "gateway/output/text.h"

namespace gateway {
namespace {

constexpr size_t kHelpColumn = 46;     // in the list of commands
constexpr size_t kMeaningColumn = 26;  // in the help of one
constexpr size_t kResultColumn = 8;
// Where the text goes when a narrow window leaves it less than this many columns beside its label.
constexpr size_t kLeastTextWidth = 30;
constexpr size_t kNarrowColumn = 6;
constexpr size_t kUsageIndent = 4;

std::string FullUsage(const Command& command) {
  const std::string usage = UsageOf(command);
  return usage.empty() ? command.name : command.name + " " + usage;
}

// A label with its text in the given column, or below it where the label or the window leave no
// room beside it.
std::string Entry(const std::string& label, size_t column, const std::string& text,
                  size_t columns) {
  if (columns != 0 && columns < column + kLeastTextWidth) column = kNarrowColumn;
  const std::string head = "  " + Wrap(label, 2, kUsageIndent, columns);
  const std::string gap = 2 + DisplayWidth(label) < column
                              ? std::string(column - 2 - DisplayWidth(label), ' ')
                              : "\n" + std::string(column, ' ');
  return head + gap + Wrap(text, column, column, columns) + "\n";
}

Record CommandRecord(const Command& command) {
  std::vector<std::string> arguments;
  std::vector<std::string> results;
  for (const CommandArgument& argument : command.arguments) arguments.push_back(argument.usage);
  for (const int code : command.results) results.push_back(std::to_string(code));
  return {.type = "command",
          .attributes = {{.name = "command", .values = {command.name}},
                         {.name = "alias", .values = {command.alias}},
                         {.name = "group", .values = {command.group}},
                         ListField("arguments", arguments),
                         {.name = "help", .values = {command.help}},
                         ListField("results", results)}};
}

}  // namespace

void ShowCommands(const std::vector<Command>& commands, Printer* printer) {
  const PrinterStyle& style = printer->style();
  const size_t columns = printer->columns();
  std::string lines;
  std::vector<std::string> groups;
  for (const Command& command : commands) {
    if (style.json) lines += JsonLine(CommandRecord(command), false);
    if (std::find(groups.begin(), groups.end(), command.group) == groups.end()) {
      groups.push_back(command.group);
    }
  }
  for (const std::string& group : groups) {
    if (style.json) break;
    lines += Paint(group, Tone::kTitle, style.color_out) + "\n";
    for (const Command& command : commands) {
      if (group != command.group) continue;
      lines += Entry(FullUsage(command), kHelpColumn, command.help, columns);
    }
  }
  if (!style.json) {
    lines +=
        Wrap("\"help COMMAND\" explains one: its arguments, results and alias.", 0, 0, columns);
    lines += "\n";
  }
  printer->ShowLines(lines);
}

void ShowCommand(const Command& command, Printer* printer) {
  if (printer->style().json) {
    printer->Show(CommandRecord(command));
    return;
  }
  const size_t columns = printer->columns();
  std::string lines = Paint(Wrap(FullUsage(command), 0, kUsageIndent, columns), Tone::kTitle,
                            printer->style().color_out) +
                      "\n  " + Wrap(command.help, 2, 2, columns) + "\n";
  for (const CommandArgument& argument : command.arguments) {
    lines += Entry(argument.usage, kMeaningColumn, argument.meaning, columns);
  }
  if (!command.alias.empty()) lines += "  Alias: " + command.alias + "\n";
  if (!command.results.empty()) lines += "  Results:\n";
  for (const int code : command.results) {
    lines += PadTo("    " + std::to_string(code), kResultColumn) +
             Wrap(ResultMessage(code), kResultColumn, kResultColumn, columns) + "\n";
  }
  printer->ShowLines(lines);
}

}  // namespace gateway
