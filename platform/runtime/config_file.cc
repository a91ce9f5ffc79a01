#include "runtime/config_file.h"

#include <tinyxml.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <system_error>
#include <utility>

namespace runtime {

namespace {

constexpr char kRootName[] = "config";
constexpr char kSpace[] = " \t\r\n";
constexpr char kDoctype[] = "!DOCTYPE";
// The parser recurses once for each level and has no limit of its own. A configuration needs few
// elements, so their number is limited instead of their depth, which is harder to know.
constexpr int kMostElements = 1000;

// What is wrong with a text, and where; lines and columns count from 1.
struct Fault {
  int line;
  int column;
  std::string reason;
};

bool ReadText(const std::string& file, std::string* text, std::string* error) {
  errno = 0;
  std::ifstream stream(file, std::ios::binary);
  // The whole file, or everything up to a zero byte, where the parser stops, too.
  std::getline(stream, *text, '\0');
  if (stream.is_open() && !stream.bad()) {
    if (!stream.eof()) text->push_back('\0');
    return true;
  }
  const int reason = errno != 0 ? errno : EIO;
  *error = file + ": cannot be read: " + std::generic_category().message(reason);
  return false;
}

// Counts lines as the parser does: a carriage return ends a line, too; with a line feed they count
// once.
Fault FaultAt(const std::string& text, size_t offset, const std::string& reason) {
  int line = 1;
  size_t line_start = 0;
  for (size_t i = 0; i < offset; ++i) {
    if (text[i] != '\n' && text[i] != '\r') continue;
    const char other = text[i] == '\n' ? '\r' : '\n';
    if (i + 1 < offset && text[i + 1] == other) ++i;
    ++line;
    line_start = i + 1;
  }
  return {line, static_cast<int>(offset - line_start + 1), reason};
}

// The position at which the first element over the limit may begin, or npos.
size_t FindElementTooMany(const std::string& text) {
  int count = 0;
  size_t at = text.find('<');
  for (; at != std::string::npos; at = text.find('<', at + 1)) {
    if (at + 1 < text.size() && std::string("/!?").find(text[at + 1]) != std::string::npos)
      continue;
    if (++count > kMostElements) break;
  }
  return at;
}

size_t StartOf(const std::string& text) {
  return std::min(text.find_first_not_of(kSpace), text.size());
}

bool IsDoctype(const TiXmlNode& node) { return node.ValueStr().rfind(kDoctype, 0) == 0; }

// The parser accepts text, more elements and unknown markup beside the root, and unknown markup
// also inside it.
const TiXmlNode* FindStray(const TiXmlDocument& document, const TiXmlElement& root) {
  for (const TiXmlNode* node = document.FirstChild(); node; node = node->NextSibling()) {
    if (node->ToElement() != nullptr && node != &root) return node;
    if (node->ToText() != nullptr) return node;
    if (node->ToUnknown() != nullptr && !IsDoctype(*node)) return node;
  }
  for (const TiXmlNode* node = root.FirstChild(); node; node = node->NextSibling()) {
    if (node->ToUnknown() != nullptr) return node;
  }
  return nullptr;
}

// Parses `text`; true if the parser reports no error.
bool Parse(const std::string& text, TiXmlDocument* document, const char** end, Fault* fault) {
  const size_t zero = text.find('\0');
  if (zero != std::string::npos) {
    *fault = FaultAt(text, zero, "a zero byte");
    return false;
  }
  const size_t too_many = FindElementTooMany(text);
  if (too_many != std::string::npos) {
    *fault = FaultAt(text, too_many, "more than " + std::to_string(kMostElements) + " elements");
    return false;
  }
  document->SetTabSize(1);
  // If a UTF-8 lead byte ends the text, the parser steps over up to three bytes behind it.
  const std::string padded = text + std::string(3, '\0');
  const char* const stop = document->Parse(padded.c_str());
  *end = stop == nullptr
             ? nullptr
             : text.c_str() + std::min(text.size(), static_cast<size_t>(stop - padded.c_str()));
  if (!document->Error()) return true;
  *fault = {document->ErrorRow(), document->ErrorCol(), document->ErrorDesc()};
  if (fault->line != 0) return false;
  // An error without a position means that the parser reached the end, or found no beginning.
  const bool began = document->FirstChild() != nullptr;
  *fault = FaultAt(text, began ? text.size() : StartOf(text), fault->reason);
  return false;
}

// True if the document consists of the root only. `end` is where the parser stopped.
bool CheckRoot(const std::string& text, const TiXmlDocument& document, const char* end,
               Fault* fault) {
  const std::string root_name = "\"" + std::string(kRootName) + "\"";
  const TiXmlElement* const root = document.RootElement();
  if (root == nullptr || root->ValueStr() != kRootName) {
    *fault = FaultAt(text, StartOf(text), "the root element is not " + root_name);
    if (root != nullptr) {
      fault->line = root->Row();
      fault->column = root->Column();
    }
    return false;
  }
  const std::string stray = "not a part of the element " + root_name;
  if (const TiXmlNode* node = FindStray(document, *root)) {
    *fault = {node->Row(), node->Column(), stray};
    return false;
  }
  if (end == nullptr || *end == '\0') return true;
  *fault = FaultAt(text, static_cast<size_t>(end - text.c_str()), stray);
  return false;
}

std::string TextOf(const TiXmlElement& element) {
  std::string text;
  for (const TiXmlNode* node = element.FirstChild(); node; node = node->NextSibling()) {
    if (node->ToText() != nullptr) text += node->ValueStr();
  }
  return text;
}

}  // namespace

bool ReadConfigEntries(const std::string& file, std::vector<ConfigEntry>* entries,
                       std::string* error) {
  std::string text;
  if (!ReadText(file, &text, error)) return false;
  TiXmlDocument document;
  Fault fault{};
  const char* end = nullptr;
  if (!Parse(text, &document, &end, &fault) || !CheckRoot(text, document, end, &fault)) {
    *error = file + ":" + std::to_string(fault.line) + ":" + std::to_string(fault.column) + ": " +
             fault.reason;
    return false;
  }
  std::vector<ConfigEntry> found;
  const TiXmlElement* key = document.RootElement()->FirstChildElement();
  for (; key != nullptr; key = key->NextSiblingElement()) {
    const bool plain = key->FirstChildElement() == nullptr && key->FirstAttribute() == nullptr;
    found.push_back({key->ValueStr(), TextOf(*key), key->Row(), plain});
  }
  *entries = std::move(found);
  return true;
}

bool ReadConfigFile(const std::string& file, std::map<std::string, std::string>* config,
                    std::string* error) {
  std::vector<ConfigEntry> entries;
  if (!ReadConfigEntries(file, &entries, error)) return false;
  std::map<std::string, std::string> found;
  for (ConfigEntry& entry : entries) found.emplace(entry.key, std::move(entry.value));
  *config = std::move(found);
  return true;
}

}  // namespace runtime
