#include "core_fw/account/src/xml_depth.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

namespace account {
namespace {

// Locale and all, the character classes are the library's: the C library's for ASCII, and a letter
// for every other byte.
bool IsSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

bool StartsName(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 127 || std::isalpha(byte) != 0 || c == '_';
}

bool ContinuesName(char c) {
  return StartsName(c) || std::isdigit(static_cast<unsigned char>(c)) != 0 || c == '-' ||
         c == '.' || c == ':';
}

// `lower` is in lower case.
bool StartsWithWord(std::string_view text, std::string_view lower) {
  return text.size() >= lower.size() &&
         std::equal(lower.begin(), lower.end(), text.begin(), [](char a, char b) {
           return a == std::tolower(static_cast<unsigned char>(b));
         });
}

// How many bytes TinyXML takes for one UTF-8 character. It looks at the first byte alone, so a lone
// lead byte swallows the "<" or the quote behind it.
size_t CharacterSize(char first) {
  const auto byte = static_cast<unsigned char>(first);
  if (byte < 0xC2 || byte > 0xF4) return 1;
  if (byte < 0xE0) return 2;
  return byte < 0xF0 ? 3 : 4;
}

// Walks through a text as TinyXML 2.6 does, but counts elements instead of building them.
//
// Each step ends where the library's own step ends, its quirks included. A scanner for well-formed
// XML would see other elements than the library in a text that is not well-formed, and so either
// let a deep one pass or refuse a shallow one. Where the library gives up, the scanner goes to the
// end of the text.
class Scanner {
 public:
  explicit Scanner(std::string_view xml) : xml_(xml) {}

  bool NestsDeeperThan(size_t limit);

 private:
  bool AtEnd() const { return at_ >= xml_.size(); }
  char Peek(size_t ahead = 0) const { return at_ + ahead < xml_.size() ? xml_[at_ + ahead] : '\0'; }
  bool StartsWith(std::string_view text) const { return xml_.substr(at_, text.size()) == text; }
  void Advance(size_t bytes) { at_ = std::min(at_ + bytes, xml_.size()); }
  void GiveUp() { at_ = xml_.size(); }
  void SkipSpace();
  void SkipPast(std::string_view mark, size_t from);
  std::string_view ReadName();
  // These three append what they read to `value`, unless it is null.
  void ReadCharacter(std::string* value);
  void ReadReference(std::string* value);
  std::string_view ReadAttribute(std::string* value);
  void SkipText();
  void ReadDeclaration();
  void ReadStartTag();
  void ReadEndTag();

  const std::string_view xml_;
  size_t at_ = 0;
  bool encoding_known_ = false;
  bool utf8_ = false;
  std::vector<std::string_view> open_;  // The names of the elements that are open here.
};

void Scanner::SkipSpace() {
  while (!AtEnd()) {
    if (utf8_ &&
        (StartsWith("\xEF\xBB\xBF") || StartsWith("\xEF\xBF\xBE") || StartsWith("\xEF\xBF\xBF"))) {
      at_ += 3;  // A byte order mark counts as white space.
    } else if (IsSpace(Peek())) {
      ++at_;
    } else {
      return;
    }
  }
}

void Scanner::SkipPast(std::string_view mark, size_t from) {
  const size_t found = xml_.find(mark, at_ + from);
  at_ = found == std::string_view::npos ? xml_.size() : found + mark.size();
}

std::string_view Scanner::ReadName() {
  const size_t start = at_;
  if (StartsName(Peek())) {
    while (ContinuesName(Peek())) ++at_;
  }
  return xml_.substr(start, at_ - start);
}

void Scanner::ReadCharacter(std::string* value) {
  if (Peek() == '&') return ReadReference(value);
  const size_t size = utf8_ ? CharacterSize(Peek()) : 1;
  if (value != nullptr) value->append(xml_.substr(at_, size));
  Advance(size);
}

void Scanner::ReadReference(std::string* value) {
  if (Peek(1) != '#' || Peek(2) == '\0') return Advance(1);  // Names hold no markup.
  const bool hex = Peek(2) == 'x';
  const size_t end = xml_.find(';', at_ + (hex ? 3 : 2));
  if (end == std::string_view::npos) return GiveUp();
  // The library reads the digits backwards, from the ";" to the nearest mark, and so swallows
  // whatever is in front of that mark.
  unsigned code = 0;
  for (size_t i = xml_.rfind(hex ? 'x' : '#', end - 1) + 1; i < end; ++i) {
    const auto digit = static_cast<unsigned char>(xml_[i]);
    if (hex ? std::isxdigit(digit) == 0 : std::isdigit(digit) == 0) return GiveUp();
    const unsigned number = std::isdigit(digit) != 0 ? digit - '0' : (digit | 32U) - 'a' + 10;
    code = code * (hex ? 16 : 10) + number;
  }
  if (value != nullptr) value->push_back(static_cast<char>(code));
  at_ = end + 1;
}

// Returns the attribute's name. Blanks around "=" and values without quotes are fine.
std::string_view Scanner::ReadAttribute(std::string* value) {
  SkipSpace();
  const std::string_view name = ReadName();
  SkipSpace();
  if (name.empty() || Peek() != '=') {
    GiveUp();
    return name;
  }
  ++at_;
  SkipSpace();
  const char quote = Peek();
  if (quote == '"' || quote == '\'') {
    ++at_;
    while (!AtEnd() && Peek() != quote) ReadCharacter(value);
    Advance(1);
    return name;
  }
  while (!AtEnd() && !IsSpace(Peek()) && Peek() != '/' && Peek() != '>') {
    if (Peek() == '"' || Peek() == '\'') {
      GiveUp();
      return name;
    }
    if (value != nullptr) value->push_back(Peek());
    ++at_;
  }
  return name;
}

// Stops at the next "<". One that ends the text opens nothing.
void Scanner::SkipText() {
  while (!AtEnd() && Peek() != '<') ReadCharacter(nullptr);
  if (at_ + 1 >= xml_.size()) GiveUp();
}

void Scanner::ReadDeclaration() {
  Advance(5);  // "<?xml"
  std::string encoding;
  while (!AtEnd() && Peek() != '>') {
    SkipSpace();
    const std::string_view rest = xml_.substr(at_);
    if (StartsWithWord(rest, "encoding")) {
      encoding.clear();
      ReadAttribute(&encoding);
    } else if (StartsWithWord(rest, "version") || StartsWithWord(rest, "standalone")) {
      ReadAttribute(nullptr);
    } else {
      while (!AtEnd() && Peek() != '>' && !IsSpace(Peek())) ++at_;
    }
  }
  Advance(1);
  // The first declaration of the document settles how its bytes are read.
  if (encoding_known_ || !open_.empty()) return;
  encoding_known_ = true;
  const std::string_view name = encoding.c_str();  // Up to a "&#0;", as in the library.
  utf8_ = name.empty() || StartsWithWord(name, "utf-8") || StartsWithWord(name, "utf8");
}

void Scanner::ReadStartTag() {
  ++at_;
  SkipSpace();  // A byte order mark looks like the beginning of a name.
  const std::string_view name = ReadName();
  if (name.empty()) return GiveUp();
  std::vector<std::string_view> attributes;
  for (SkipSpace(); !AtEnd(); SkipSpace()) {
    if (Peek() == '>') {
      ++at_;
      open_.push_back(name);
      return;
    }
    if (Peek() == '/') {
      if (Peek(1) != '>') return GiveUp();
      at_ += 2;
      return;
    }
    const std::string_view attribute = ReadAttribute(nullptr);
    if (std::find(attributes.begin(), attributes.end(), attribute) != attributes.end()) {
      return GiveUp();
    }
    attributes.push_back(attribute);
  }
}

void Scanner::ReadEndTag() {
  Advance(2);
  if (!StartsWith(open_.back())) return GiveUp();
  Advance(open_.back().size());
  SkipSpace();
  if (Peek() != '>') return GiveUp();
  ++at_;
  open_.pop_back();
}

bool Scanner::NestsDeeperThan(size_t limit) {
  for (SkipSpace(); !AtEnd(); SkipSpace()) {
    if (Peek() != '<') {
      if (open_.empty()) return false;  // Text outside all elements ends the document.
      SkipText();
    } else if (Peek(1) == '/' && !open_.empty()) {
      ReadEndTag();
    } else if (StartsWithWord(xml_.substr(at_), "<?xml")) {
      ReadDeclaration();
    } else if (StartsWith("<!--")) {
      SkipPast("-->", 4);
    } else if (StartsWith("<![CDATA[")) {
      SkipPast("]]>", 9);
    } else if (StartsName(Peek(1))) {
      if (open_.size() == limit) return true;
      ReadStartTag();
    } else {
      SkipPast(">", 1);
    }
  }
  return false;
}

// Whether elements can begin at more than `limit` places. Nearly all answers have few, and need no
// scanner.
bool HasMoreStarts(std::string_view xml, size_t limit) {
  size_t count = 0;
  for (size_t at = 0; at + 1 < xml.size() && count <= limit; ++at) {
    if (xml[at] == '<' && StartsName(xml[at + 1])) ++count;
  }
  return count > limit;
}

}  // namespace

bool XmlNestsDeeperThan(std::string_view xml, int limit) {
  const auto levels = static_cast<size_t>(limit);
  return HasMoreStarts(xml, levels) && Scanner(xml).NestsDeeperThan(levels);
}

}  // namespace account
