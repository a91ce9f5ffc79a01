#include "gateway/console/words.h"

#include <utility>

#include "gateway/output/text.h"

namespace gateway {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

class Splitter {
 public:
  Splitter(const std::string& line, const Variables& variables)
      : line_(line), variables_(variables) {}

  bool Run(std::vector<std::string>* words) {
    for (;;) {
      while (!AtEnd() && IsBlank(line_[at_])) ++at_;
      if (AtEnd() || line_[at_] == '#') return true;
      std::string word;
      if (!ReadWord(&word)) return false;
      // After variables were replaced, since their values come from a cloud: words become parts of
      // HTTP headers, where a line break would begin another header.
      if (HasControlCharacter(word)) {
        return Fail("control characters are not taken in an argument: " + Clip(Visible(word)));
      }
      words->push_back(std::move(word));
    }
  }

  const std::string& error() const { return error_; }

 private:
  bool AtEnd() const { return at_ == line_.size(); }

  bool Fail(const std::string& error) {
    error_ = error;
    return false;
  }

  bool ReadWord(std::string* word) {
    while (!AtEnd() && !IsBlank(line_[at_])) {
      const char c = line_[at_++];
      bool good = true;
      if (c == '\'') {
        good = ReadSingleQuoted(word);
      } else if (c == '"') {
        good = ReadDoubleQuoted(word);
      } else if (c == '\\') {
        good = ReadEscaped(word);
      } else if (c == '$') {
        good = ReadVariable(word);
      } else {
        *word += c;
      }
      if (!good) return false;
    }
    return true;
  }

  bool ReadSingleQuoted(std::string* word) {
    const size_t end = line_.find('\'', at_);
    if (end == std::string::npos) return Fail("a single quote is not closed");
    word->append(line_, at_, end - at_);
    at_ = end + 1;
    return true;
  }

  bool ReadDoubleQuoted(std::string* word) {
    while (!AtEnd()) {
      const char c = line_[at_++];
      if (c == '"') return true;
      if (c == '$') {
        if (!ReadVariable(word)) return false;
      } else if (c == '\\' && !AtEnd() && IsEscapableInQuotes(line_[at_])) {
        *word += line_[at_++];
      } else {
        *word += c;
      }
    }
    return Fail("a double quote is not closed");
  }

  static bool IsEscapableInQuotes(char c) { return c == '"' || c == '\\' || c == '$'; }

  bool ReadEscaped(std::string* word) {
    if (AtEnd()) return Fail("nothing follows the backslash at the end");
    *word += line_[at_++];
    return true;
  }

  bool ReadVariable(std::string* word) {
    std::string name;
    if (!AtEnd() && line_[at_] == '{') {
      const size_t end = line_.find('}', at_);
      if (end == std::string::npos) return Fail("\"${\" is not closed");
      name = line_.substr(at_ + 1, end - at_ - 1);
      at_ = end + 1;
    } else if (!AtEnd() && IsNameStart(line_[at_])) {
      while (!AtEnd() && IsNamePart(line_[at_])) name += line_[at_++];
    } else {
      // A price or a pattern: no name follows, so nothing is meant to be replaced.
      *word += '$';
      return true;
    }
    const std::string* value = variables_.Find(name);
    if (value == nullptr) return Fail("unknown variable \"" + Clip(Visible(name)) + "\"");
    *word += *value;
    return true;
  }

  const std::string& line_;
  const Variables& variables_;
  size_t at_ = 0;
  std::string error_;
};

}  // namespace

bool SplitWords(const std::string& line, const Variables& variables,
                std::vector<std::string>* words, std::string* error) {
  Splitter splitter(line, variables);
  std::vector<std::string> found;
  if (!splitter.Run(&found)) {
    *error = splitter.error();
    return false;
  }
  *words = std::move(found);
  return true;
}

size_t LastWordStart(const std::string& line) {
  size_t start = 0;
  for (size_t at = 0; at < line.size(); ++at) {
    if (line[at] == '\\') {
      ++at;  // A blank behind a backslash belongs to the word.
    } else if (IsBlank(line[at])) {
      start = at + 1;
    }
  }
  return start;
}

std::string EscapeWord(const std::string& text) {
  if (text.empty()) return "''";
  std::string escaped;
  for (const char c : text) {
    const bool begins_comment = c == '#' && escaped.empty();
    if (IsBlank(c) || begins_comment || std::string("'\"\\$").find(c) != std::string::npos) {
      escaped += '\\';
    }
    escaped += c;
  }
  return escaped;
}

}  // namespace gateway
