// What a person is told of a console command.
#ifndef QORN_GATEWAY_CONSOLE_COMMANDS_H_
#define QORN_GATEWAY_CONSOLE_COMMANDS_H_

namespace gateway {

struct CommandInfo {
  const char* name;       // in kebab case
  const char* alias;      // a shorter name; "" for none
  const char* group;      // the heading in the list of commands
  const char* arguments;  // their names, divided by blanks
  const char* help;       // one line
  // The result codes that it can answer, divided by blanks; "" when it answers none.
  const char* results;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_CONSOLE_COMMANDS_H_
