#include "ctl/completion.h"

#include <iostream>

#include "ctl/options.h"
#include "gateway/console/console.h"
#include "gateway/process/exit_status.h"

namespace ctl {
namespace {

// In both scripts these words stand for what is known of options and commands.
constexpr char kOptionsPlace[] = "@OPTIONS@";
constexpr char kValuesPlace[] = "@VALUES@";
constexpr char kCommandsPlace[] = "@COMMANDS@";

constexpr char kBash[] = R"(# Completes qornctl in bash; made by "qornctl completion bash".
_qornctl() {
  local word=${COMP_WORDS[COMP_CWORD]} command='' words='@COMMANDS@' i
  for ((i = 1; i < COMP_CWORD; i++)); do
    case ${COMP_WORDS[i]} in
      @VALUES@)
        ((i++))
        # Bash makes words of "=" and ":", and of what is around them.
        [[ ${COMP_WORDS[i]} != = ]] || ((i++))
        while [[ ${COMP_WORDS[i + 1]} == [:=]* ]]; do ((i += 2)); done
        ;;
      -*) ;;
      *)
        command=${COMP_WORDS[i]}
        break
        ;;
    esac
  done
  case $command in
    '')
      [[ $word != -* ]] || words='@OPTIONS@'
      # The word is an option's value.
      ((i == COMP_CWORD)) || words=''
      [[ ${COMP_WORDS[COMP_CWORD - 1]} != --bus ]] || words='system session'
      ;;
    help) ((COMP_CWORD == i + 1)) || words='' ;;
    completion) words='bash zsh' ;;
    *) words='' ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -F _qornctl qornctl
)";

constexpr char kZsh[] = R"(#compdef qornctl
# Completes qornctl in zsh; made by "qornctl completion zsh".
_qornctl() {
  local curcontext="$curcontext" state line
  local -a commands
  commands=(
@COMMANDS@  )
  _arguments -C -A '-*' \
@OPTIONS@    '1: :->command' \
    '2: :->word'
  case $state in
    command) _describe command commands ;;
    word)
      case $line[1] in
        help) _describe command commands ;;
        completion) compadd bash zsh ;;
      esac
      ;;
  esac
}
if [ "$funcstack[1]" = _qornctl ]; then
  _qornctl "$@"
else
  compdef _qornctl qornctl
fi
)";

struct CommandHelp {
  std::string name;
  std::string help;
};

std::vector<CommandHelp> KnownCommands() {
  std::vector<CommandHelp> commands;
  for (const gateway::Command& command : gateway::Console::Commands()) {
    commands.push_back({command.name, command.help});
  }
  commands.push_back({"completion", "print a script by which bash or zsh completes qornctl"});
  return commands;
}

std::string Replace(std::string text, const std::string& place, const std::string& by) {
  for (size_t at = 0; (at = text.find(place, at)) != std::string::npos; at += by.size()) {
    text.replace(at, place.size(), by);
  }
  return text;
}

std::string BashScript() {
  std::string options, values, commands;
  const auto append = [](const char* between, const std::string& word, std::string* words) {
    *words += (words->empty() ? "" : between) + word;
  };
  for (const KnownOption& option : KnownOptions()) {
    append(" ", option.name, &options);
    if (option.takes_value) append(" | ", option.name, &values);
  }
  for (const CommandHelp& command : KnownCommands()) append(" ", command.name, &commands);
  const std::string script = Replace(Replace(kBash, kOptionsPlace, options), kValuesPlace, values);
  return Replace(script, kCommandsPlace, commands);
}

// Between single quotes.
std::string Quote(const std::string& text) { return "'" + Replace(text, "'", "'\\''") + "'"; }

std::string ZshScript() {
  std::string options, commands;
  for (const KnownOption& option : KnownOptions()) {
    std::string spec = option.name + "[" + option.help + "]";
    if (option.takes_value) spec += ":" + option.name.substr(2) + ":";
    if (option.name == "--bus") spec += "(system session)";
    options += "    " + Quote(spec) + " \\\n";
  }
  for (const CommandHelp& command : KnownCommands()) {
    commands += "    " + Quote(command.name + ":" + command.help) + "\n";
  }
  return Replace(Replace(kZsh, kOptionsPlace, options), kCommandsPlace, commands);
}

}  // namespace

int PrintCompletion(const std::vector<std::string>& command) {
  const std::string shell = command.size() == 2 ? command[1] : "";
  if (shell != "bash" && shell != "zsh") {
    std::cerr << "qornctl: completion expects bash or zsh\n";
    return gateway::kExitCannotStart;
  }
  std::cout << (shell == "bash" ? BashScript() : ZshScript()) << std::flush;
  if (std::cout) return gateway::kExitGood;
  std::cerr << "qornctl: not all of the output could be written\n";
  return gateway::kExitCommandFailed;
}

}  // namespace ctl
