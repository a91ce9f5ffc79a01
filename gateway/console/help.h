// What the console says about its commands.
#ifndef QORN_GATEWAY_CONSOLE_HELP_H_
#define QORN_GATEWAY_CONSOLE_HELP_H_

#include <vector>

#include "gateway/console/commands.h"
#include "gateway/output/printer.h"

namespace gateway {

// A list under headings.
void ShowCommands(const std::vector<Command>& commands, Printer* printer);

// Arguments, meaning and possible results of one.
void ShowCommand(const Command& command, Printer* printer);

}  // namespace gateway

#endif  // QORN_GATEWAY_CONSOLE_HELP_H_
