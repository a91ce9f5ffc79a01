#include "core_fw/account/src/xml_depth.h"

#include <cstddef>

namespace account {
namespace {

constexpr std::size_t kEnd = std::string_view::npos;

// What the XML library takes for the first character of an element's name.
bool StartsName(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_' || byte >= 127;
}

bool OpensElement(std::string_view xml, std::size_t at) {
  return at + 1 < xml.size() && StartsName(xml[at + 1]);
}

int CountElements(std::string_view xml, int limit) {
  int count = 0;
  for (std::size_t at = xml.find('<'); at != kEnd && count <= limit; at = xml.find('<', at + 1)) {
    if (OpensElement(xml, at)) ++count;
  }
  return count;
}

// The position behind a plain declaration at the start of the text; kEnd for any other start.
std::size_t SkipDeclaration(std::string_view xml) {
  const std::size_t close = xml.find("?>");
  if (close == kEnd) return kEnd;
  char quote = 0;
  char previous = 0;
  for (char c : xml.substr(0, close).substr(1)) {
    if (c == '<' || c == '>') return kEnd;
    if (quote != 0) {
      if (c == quote) quote = 0;
    } else if (c == '"' || c == '\'') {
      if (previous != '=') return kEnd;
      quote = c;
    }
    previous = c;
  }
  return quote == 0 ? close + 2 : kEnd;
}

std::size_t Behind(std::string_view xml, std::string_view mark, std::size_t from) {
  const std::size_t found = xml.find(mark, from);
  return found == kEnd ? kEnd : found + mark.size();
}

// The position behind an element's tag that begins at `at`; `empty` for "<a/>".
std::size_t SkipTag(std::string_view xml, std::size_t at, bool* empty) {
  char quote = 0;
  for (std::size_t i = at + 1; i < xml.size(); ++i) {
    const char c = xml[i];
    if (quote != 0) {
      if (c == quote) quote = 0;
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '>') {
      *empty = xml[i - 1] == '/';
      return i + 1;
    }
  }
  return kEnd;
}

}  // namespace

bool XmlNestsDeeperThan(std::string_view xml, int limit) {
  if (CountElements(xml, limit) <= limit) return false;
  int depth = 0;
  std::size_t at = SkipDeclaration(xml);
  if (at == kEnd) return true;
  for (at = xml.find('<', at); at != kEnd; at = xml.find('<', at)) {
    const std::string_view rest = xml.substr(at);
    if (rest.substr(0, 2) == "<?") return true;
    if (rest.substr(0, 4) == "<!--") {
      at = Behind(xml, "-->", at + 4);
    } else if (rest.substr(0, 9) == "<![CDATA[") {
      at = Behind(xml, "]]>", at + 9);
    } else if (OpensElement(xml, at)) {
      bool empty = false;
      at = SkipTag(xml, at, &empty);
      if (!empty && ++depth > limit) return true;
    } else {
      if (rest.substr(0, 2) == "</" && depth > 0) --depth;
      at = Behind(xml, ">", at);
    }
  }
  return false;
}

}  // namespace account
