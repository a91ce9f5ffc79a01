#include <algorithm>
#include <limits>

#include "gateway/console.h"
#include "gateway/result_names.h"
#include "gateway/text.h"

namespace gateway {
namespace {

constexpr size_t kAnyNumber = std::numeric_limits<size_t>::max();
constexpr std::chrono::milliseconds kNetworkPollPause{100};
constexpr int kNetworkPolls = 100;

std::string Usage(const std::string& name, const std::string& arguments) {
  return arguments.empty() ? name : name + " " + arguments;
}

}  // namespace

const std::vector<Console::Builtin>& Console::Builtins() {
  static const std::vector<Builtin> builtins = {
      {"request-code", "USER", "fetch an authorisation code from the account server into $code", 1,
       1, true, &Console::RequestCode},
      {"wait-network", "", "wait, ten seconds at most, until the network setting status is 1", 0, 0,
       true, &Console::WaitNetwork},
      {"expect", "RESULT COMMAND...",
       "run a command and fail unless it answers RESULT: a number, a constant's name or success", 2,
       kAnyNumber, false, &Console::Expect},
      {"set", "NAME VALUE", "give a variable a value, used as $NAME or ${NAME}", 2, 2, false,
       &Console::Set},
      {"say", "TEXT...", "print a text", 1, kAnyNumber, false, &Console::Say},
      {"help", "[COMMAND]", "list the commands, or explain one", 0, 1, false, &Console::Help},
      {"quit", "", "stop the gateway", 0, 0, false, &Console::Quit},
  };
  return builtins;
}

const Console::Builtin* Console::FindBuiltin(const std::string& name) {
  const std::vector<Builtin>& builtins = Builtins();
  auto found = std::find_if(builtins.begin(), builtins.end(),
                            [&name](const Builtin& builtin) { return name == builtin.name; });
  return found == builtins.end() ? nullptr : &*found;
}

Console::Step Console::Expect(const Words& words) {
  int expected = 0;
  if (!ParseResult(words[1], &expected)) {
    return Step{"expect: \"" + words[1] +
                    "\" is no result: a number, \"success\" or a name such as kAccountNoUser",
                {}};
  }
  const Builtin* builtin = FindBuiltin(words[2]);
  if (builtin != nullptr && !builtin->answers) {
    return Step{"expect: " + words[2] + " answers no result", {}};
  }
  Step step = Perform(Words(words.begin() + 2, words.end()));
  if (!step.answer || step.answer->code == expected) return Step{step.error, {}};
  return Step{words[2] + " answered " + std::to_string(step.answer->code) + ", expected " +
                  std::to_string(expected),
              {}};
}

Console::Step Console::Help(const Words& words) {
  std::string text;
  auto add = [&](const auto& commands) {
    for (const auto& command : commands) {
      if (words.size() == 2 && words[1] != command.name) continue;
      printer_->Block(Usage(command.name, command.arguments), {});
      printer_->Block(std::string("    ") + command.help, {});
      text = command.name;
    }
  };
  add(Operations());
  add(Builtins());
  if (text.empty()) return Step{"help: unknown command \"" + words[1] + "\"", {}};
  return Step{};
}

Console::Step Console::Quit(const Words&) {
  Step step;
  step.quit = true;
  return step;
}

Console::Step Console::RequestCode(const Words& words) {
  Activity::Scope scope(*activity_, words[0]);
  std::string code;
  std::string error;
  if (!services_.request_code(words[1], &code, &error)) return Step{"request-code: " + error, {}};
  Answer answer;
  answer.outputs.push_back(Field{"code", {code}, true});
  return Step{"", answer};
}

Console::Step Console::Say(const Words& words) {
  printer_->Say(HideSecrets(JoinWords(words, 1)));
  return Step{};
}

Console::Step Console::Set(const Words& words) {
  if (!Variables::IsName(words[1])) {
    return Step{"set: \"" + words[1] + "\" is no name: letters, digits and \"_\", no digit first",
                {}};
  }
  variables_.Set(words[1], words[2]);
  return Step{};
}

Console::Step Console::WaitNetwork(const Words& words) {
  Activity::Scope scope(*activity_, words[0]);
  for (int i = 0; i < kNetworkPolls; ++i) {
    if (services_.accounts->GetNetworkSettingStatus() == 1) return Step{"", Answer{}};
    if (services_.pause(kNetworkPollPause)) return Step{"wait-network: told to stop", {}};
  }
  return Step{"wait-network: the network setting status is still 0 after ten seconds", {}};
}

}  // namespace gateway
