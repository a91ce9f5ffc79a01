// What the console tells the terminal about a line that is being typed: completions, and whether
// the history may keep it.
#include <algorithm>

#include "gateway/console/console.h"
#include "gateway/console/words.h"
#include "gateway/output/text.h"

namespace gateway {
namespace {

using Words = std::vector<std::string>;

// The line's finished words, and the beginning of the one that is being typed.
void SplitForCompletion(const std::string& line, Words* finished, std::string* beginning) {
  const size_t start = LastWordStart(line);
  *finished = SplitAtBlanks(line.substr(0, start));
  *beginning = line.substr(start);
  while (finished->size() >= 2 && finished->front() == "expect") {
    finished->erase(finished->begin(), finished->begin() + 2);
  }
}

// The texts, sorted, that begin so.
template <typename Texts>
Words Matching(const Texts& texts, const std::string& beginning) {
  Words found;
  for (const std::string& text : texts) {
    // A text with control characters cannot be typed, and could control the terminal that lists it.
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
  // Split once more with all variables empty: what is left of a word was typed.
  if (!SplitWords(line, variables_, &words, &error) || words.empty() ||
      !SplitWords(line, variables_.Emptied(), &typed, &error)) {
    return false;
  }
  // What stands under expect counts.
  while (words.size() > 2 && words[0] == "expect") {
    words.erase(words.begin(), words.begin() + 2);
    typed.erase(typed.begin(), typed.begin() + 2);
  }
  const Command* const command = FindCommand(words[0]);
  if (command == nullptr || variables_.HideSecrets(line) != line) return false;
  const std::vector<CommandArgument>& arguments = command->arguments;
  // Too many words: which of them is a secret cannot be told.
  const size_t given = words.size() - 1;
  if (given > arguments.size() && !command->Accepts(given)) return false;
  for (size_t i = 1; i < words.size(); ++i) {
    // More words than arguments belong to the last one.
    if (arguments[std::min(i, arguments.size()) - 1].secret && !typed[i].empty()) return false;
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
    for (const Command& command : Commands()) names.push_back(command.name);
    return Matching(names, beginning);
  }
  if (finished.size() == 1 && finished[0] == "expect") return Matching(Words{"success"}, beginning);
  const Command* const command = FindCommand(finished[0]);
  if (command == nullptr || finished.size() > command->arguments.size()) return {};
  Words ids;
  for (const std::string& id : parts_.seen_ids->Ids(command->arguments[finished.size() - 1].kind)) {
    ids.push_back(EscapeWord(id));
  }
  return Matching(ids, beginning);
}

}  // namespace gateway
