// What the console knows of a line while it is typed: completion, and what history may keep.
#include <algorithm>

#include "gateway/console/console.h"
#include "gateway/console/words.h"
#include "gateway/output/text.h"

namespace gateway {
namespace {

using Words = std::vector<std::string>;

constexpr const char* kSecretArguments[] = {"CODE", "PASSWORD", "FRIEND_AUTH_CODE", "TEXT"};

bool IsSecret(const std::string& argument) {
  return std::find(std::begin(kSecretArguments), std::end(kSecretArguments), argument) !=
         std::end(kSecretArguments);
}

// The kind of ID that an argument is, in the words of Sightings::Ids; "" for another argument.
std::string KindOf(std::string argument) {
  if (argument.starts_with('[')) argument = argument.substr(1, argument.size() - 2);
  if (argument == "TARGET_USER_ID") return "user_id";
  for (const auto& [name, kind] :
       {std::pair{"USER_ID", "user_id"}, std::pair{"USER_UUID", "user_uuid"},
        std::pair{"SESSION_ID", "session_id"}, std::pair{"FRIEND_UUID", "friend_uuid"},
        std::pair{"FRIEND_ID", "friend_id"}, std::pair{"FRIEND_PEER_ID", "friend_peer_id"}}) {
    if (argument == name) return kind;
  }
  return "";
}

// The line's finished words, and the beginning of the one that is being typed.
void SplitForCompletion(const std::string& line, Words* finished, std::string* beginning) {
  const size_t blank = line.find_last_of(" \t");
  const size_t start = blank == std::string::npos ? 0 : blank + 1;
  *finished = SplitAtBlanks(line.substr(0, start));
  *beginning = line.substr(start);
  while (finished->size() >= 2 && finished->front() == "expect") {
    finished->erase(finished->begin(), finished->begin() + 2);
  }
}

template <typename Texts>
Words Matching(const Texts& texts, const std::string& beginning) {
  Words found;
  for (const std::string& text : texts) {
    // What cannot be typed is not offered: it could steer the terminal that lists it.
    if (text.starts_with(beginning) && Visible(text) == text) found.push_back(text);
  }
  std::sort(found.begin(), found.end());
  return found;
}

}  // namespace

bool Console::MayBeKept(const std::string& line) const {
  Words words;
  Words typed;
  std::string error;
  // With variables that are all empty, what stays of a word was typed.
  if (!SplitWords(line, variables_, &words, &error) || words.empty() ||
      !SplitWords(line, variables_.Emptied(), &typed, &error)) {
    return false;
  }
  while (words.size() > 2 && words[0] == "expect") {
    words.erase(words.begin(), words.begin() + 2);
    typed.erase(typed.begin(), typed.begin() + 2);
  }
  const std::optional<CommandInfo> command = FindCommand(words[0]);
  if (!command || variables_.HideSecrets(line) != line) return false;
  const Words names = SplitAtBlanks(command->arguments);
  if (words.size() - 1 > names.size()) return words[0] == "say";
  for (size_t i = 1; i < words.size(); ++i) {
    if (IsSecret(names[i - 1]) && !typed[i].empty()) return false;
  }
  return true;
}

std::vector<std::string> Console::Complete(const std::string& line) const {
  Words finished;
  std::string beginning;
  SplitForCompletion(line, &finished, &beginning);
  if (beginning.starts_with('$')) {
    Words names;
    for (const std::string& name : variables_.Names()) names.push_back("$" + name);
    return Matching(names, beginning);
  }
  const bool names_command = finished.empty() || (finished.size() == 1 && finished[0] == "help");
  if (names_command) {
    Words names;
    for (const CommandInfo& command : Commands()) names.emplace_back(command.name);
    return Matching(names, beginning);
  }
  if (finished.size() == 1 && finished[0] == "expect") return Matching(Words{"success"}, beginning);
  const std::optional<CommandInfo> command = FindCommand(finished[0]);
  if (!command) return {};
  const Words arguments = SplitAtBlanks(command->arguments);
  if (finished.size() > arguments.size()) return {};
  const std::string kind = KindOf(arguments[finished.size() - 1]);
  return Matching(parts_.sightings->Ids(kind), beginning);
}

}  // namespace gateway
