// Carries out console lines: the operations of the account interface and a few commands around
// them.
#ifndef QORN_GATEWAY_CONSOLE_H_
#define QORN_GATEWAY_CONSOLE_H_

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core_fw/account/include/account_manager.h"
#include "gateway/activity.h"
#include "gateway/operations.h"
#include "gateway/printer.h"
#include "gateway/variables.h"

namespace gateway {

// What the console needs of the program around it.
struct ConsoleServices {
  AccountManager* accounts;            // borrowed
  std::function<void()> flush_events;  // returns once all published events are shown
  // Fetches an authorisation code for the user; false with one line in `error`.
  std::function<bool(const std::string& user, std::string* code, std::string* error)> request_code;
  // Waits; true when the program was told to stop.
  std::function<bool(std::chrono::milliseconds)> pause;
};

// Not thread-safe: one thread executes the lines.
class Console {
 public:
  // Borrows printer and activity.
  Console(ConsoleServices services, Printer* printer, Activity* activity);

  struct Outcome {
    std::string error;  // one line; "" when the line did what it should
    bool quit = false;
  };

  // Shows the answer. An empty line or a comment is good. An operation that answers another code
  // than 1 is an error, unless `expect` asked for that code.
  Outcome Execute(const std::string& line);

 private:
  using Words = std::vector<std::string>;

  struct Step {
    std::string error;
    std::optional<Answer> answer;
    bool quit = false;
  };

  // A command that is no operation. `least` and `most` count its arguments.
  struct Builtin {
    const char* name;
    const char* arguments;
    const char* help;
    size_t least;
    size_t most;
    bool answers;  // can stand under expect
    Step (Console::*run)(const Words& words);
  };

  static const std::vector<Builtin>& Builtins();
  static const Builtin* FindBuiltin(const std::string& name);

  // Shortens the secrets in a text, unless they are to be shown.
  std::string HideSecrets(const std::string& text) const;

  Step Perform(const Words& words);
  Step PerformBuiltin(const Builtin& builtin, const Words& words);
  Step PerformOperation(const Operation& operation, const Words& words);
  void ShowAndRemember(const std::string& name, const Answer& answer);

  Step Expect(const Words& words);
  Step Help(const Words& words);
  Step Quit(const Words& words);
  Step RequestCode(const Words& words);
  Step Say(const Words& words);
  Step Set(const Words& words);
  Step WaitNetwork(const Words& words);

  const ConsoleServices services_;
  Printer* const printer_;
  Activity* const activity_;
  Variables variables_;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_CONSOLE_H_
