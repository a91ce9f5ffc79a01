#include "gateway/console/console.h"
#include "gateway/console/help.h"
#include "gateway/console/status.h"
#include "gateway/console/views.h"
#include "gateway/operations/result_names.h"
#include "gateway/output/text.h"

namespace gateway {
namespace {

constexpr std::chrono::milliseconds kNetworkPollPause{100};
constexpr int kNetworkPolls = 100;

constexpr char kLooking[] = "Looking around";
constexpr char kConsole[] = "The console";
constexpr char kSecondsMeaning[] =
    "how long; without it until Enter or, in a script, until the gateway stops";
constexpr char kResultMeaning[] = "a number, a constant's name such as kAccountNoUser, or success";

}  // namespace

const std::vector<Console::Builtin>& Console::Builtins() {
  using Argument = CommandArgument;
  static const std::vector<Builtin> builtins = {
      {.command = {.name = "status",
                   .group = kLooking,
                   .help = "show how the gateway stands, at a glance"},
       .run = &Console::Status},
      {.command = {.name = "users", .group = kLooking, .help = "show all users in a table"},
       .run = &Console::Users},
      {.command = {.name = "friends",
                   .group = kLooking,
                   .arguments = {Argument(parameter::kUserUuid).Optional()},
                   .help = "show the friends of one user or of all"},
       .run = &Console::Friends},
      {.command = {.name = "watch",
                   .group = kLooking,
                   .arguments = {Argument("[SECONDS]", kSecondsMeaning, IdKind::kNone,
                                          Secrecy::kOpen)},
                   .help = "follow events and log lines; Enter ends it at a terminal"},
       .run = &Console::Watch},
      {.command = {.name = "metrics",
                   .group = kLooking,
                   .help = "print what the gateway counts, in Prometheus's text format"},
       .run = &Console::Metrics},
      {.command = {.name = "request-code",
                   .alias = "code",
                   .group = kConsole,
                   .arguments = {Argument(parameter::kUserId)},
                   .help = "fetch an authorisation code from the account server into $code",
                   .results = {kAccountSuccess}},
       .run = &Console::RequestCode},
      {.command = {.name = "wait-network",
                   .group = kConsole,
                   .help = "wait, ten seconds at most, until the network setting status is 1",
                   .results = {kAccountSuccess}},
       .run = &Console::WaitNetwork},
      {.command = {.name = "expect",
                   .group = kConsole,
                   .arguments = {Argument("RESULT", kResultMeaning, IdKind::kNone, Secrecy::kOpen),
                                 Argument("COMMAND...", "a command with its arguments",
                                          IdKind::kNone, Secrecy::kOpen)},
                   .help = "run a command and fail unless it answers RESULT: a number, a "
                           "constant's name or success"},
       .run = &Console::Expect},
      // The text may be a code that was typed.
      {.command = {.name = "set",
                   .group = kConsole,
                   .arguments = {Argument("NAME", "letters, digits and \"_\", no digit first",
                                          IdKind::kNone, Secrecy::kOpen),
                                 Argument("TEXT", "the variable's value", IdKind::kNone,
                                          Secrecy::kSecret)},
                   .help = "give a variable a value, used as $NAME or ${NAME}"},
       .run = &Console::Set},
      {.command = {.name = "say",
                   .group = kConsole,
                   .arguments = {Argument("TEXT...", "any words", IdKind::kNone, Secrecy::kOpen)},
                   .help = "print a text"},
       .run = &Console::Say},
      {.command = {.name = "help",
                   .alias = "?",
                   .group = kConsole,
                   .arguments = {Argument("[COMMAND]", "a command's name or alias", IdKind::kNone,
                                          Secrecy::kOpen)},
                   .help = "list the commands, or explain one"},
       .run = &Console::Help},
      {.command = {.name = "quit", .alias = "exit", .group = kConsole, .help = "end this program"},
       .run = &Console::Quit},
  };
  return builtins;
}

Console::Step Console::Expect(const Words& words) {
  int expected = 0;
  if (!ParseResult(words[1], &expected)) {
    return Step{"expect: \"" + words[1] +
                    "\" is no result: a number, \"success\" or a name such as kAccountNoUser",
                {}};
  }
  const Builtin* builtin = FindBuiltin(words[2]);
  if (builtin != nullptr && builtin->command.results.empty()) {
    return Step{"expect: " + words[2] + " answers no result", {}};
  }
  // Without an answer the command was not run, which no expected result makes good.
  Step step = Perform(Words(words.begin() + 2, words.end()));
  if (!step.answer || step.answer->code == expected) return Step{step.error, {}};
  return Step{words[2] + " answered " + std::to_string(step.answer->code) + ", expected " +
                  std::to_string(expected),
              {}};
}

Console::Step Console::Friends(const Words& words) {
  const AccountResult result =
      ShowFriends(services_, words.size() == 2 ? words[1] : "", parts_.printer);
  return Step{result == kAccountSuccess ? "" : "friends: " + Describe(result), {}};
}

Console::Step Console::Help(const Words& words) {
  if (words.size() == 1) {
    ShowCommands(Commands(), parts_.printer);
    return Step{};
  }
  const Command* const command = FindCommand(words[1]);
  if (command == nullptr) return Step{"help: " + UnknownCommand(words[1]), {}};
  ShowCommand(*command, parts_.printer);
  return Step{};
}

Console::Step Console::Metrics(const Words&) {
  std::string text;
  std::string error;
  if (!services_.read_metrics(&text, &error)) return Step{"metrics: " + error, {}};
  if (parts_.printer->style().json) {
    parts_.printer->Show(
        Record{.type = "metrics", .attributes = {{.name = "text", .values = {text}}}});
  } else {
    parts_.printer->ShowLines(text);
  }
  return Step{};
}

Console::Step Console::Quit(const Words&) {
  Step step;
  step.quit = true;
  return step;
}

Console::Step Console::RequestCode(const Words& words) {
  Activity::Scope scope(*parts_.activity, words[0]);
  std::string code;
  std::string error;
  if (!services_.request_code(words[1], &code, &error)) return Step{"request-code: " + error, {}};
  Answer answer;
  answer.outputs.push_back({.name = "code", .values = {code}, .secret = true});
  return Step{"", answer};
}

Console::Step Console::Say(const Words& words) {
  parts_.printer->Say(HideSecrets(JoinWords(words, 1)));
  return Step{};
}

Console::Step Console::Set(const Words& words) {
  if (!Variables::IsName(words[1])) {
    return Step{"set: \"" + words[1] + "\" is no name: letters, digits and \"_\", no digit first",
                {}};
  }
  // A copy of a secret stays one when its source gets another value.
  variables_.Set(words[1], words[2], variables_.HideSecrets(words[2]) != words[2]);
  return Step{};
}

Console::Step Console::Status(const Words&) {
  ShowStatus(services_, parts_.seen_ids, parts_.printer);
  return Step{};
}

Console::Step Console::Users(const Words&) {
  const AccountResult result = ShowUsers(services_, parts_.printer);
  return Step{result == kAccountSuccess ? "" : "users: " + Describe(result), {}};
}

Console::Step Console::WaitNetwork(const Words& words) {
  Activity::Scope scope(*parts_.activity, words[0]);
  // No event tells when the network setting arrives.
  for (int i = 0; i < kNetworkPolls; ++i) {
    if (services_.accounts->GetNetworkSettingStatus() == 1) return Step{"", Answer{}};
    if (services_.pause(kNetworkPollPause)) return Step{"wait-network: told to stop", {}};
  }
  return Step{"wait-network: the network setting status is still 0 after ten seconds", {}};
}

Console::Step Console::Watch(const Words& words) {
  std::optional<std::chrono::seconds> time;
  int seconds = 0;
  if (words.size() == 2) {
    if (!ParseInt(words[1], &seconds) || seconds < 0) {
      return Step{"watch: \"" + words[1] + "\" is no number of seconds", {}};
    }
    time = std::chrono::seconds(seconds);
  }
  services_.watch(time);
  return Step{};
}

}  // namespace gateway
