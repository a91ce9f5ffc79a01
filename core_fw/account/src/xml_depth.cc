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
      if (c == quote) {
        quote = 0;
      } else if (std::string_view("\"'& \t\r\n\v\f").find(c) != kEnd) {
        return kEnd;  // The library may see another end of this value.
      }
    } else if (c == '"' || c == '\'') {
      if (previous != '=') return kEnd;
      quote = c;
    }
    previous = c;
  }
  return quote == 0 ? close + 2 : kEnd;
}

bool IsHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// How many bytes the XML library takes for one character, whatever follows the first.
std::size_t CharacterSize(char first) {
  const auto byte = static_cast<unsigned char>(first);
  if (byte < 0xC2 || byte > 0xF4) return 1;
  if (byte < 0xE0) return 2;
  return byte < 0xF0 ? 3 : 4;
}

// Whether no character of the text hides markup from the XML library: it swallows what follows a
// lead byte unseen, and all between "&#" and the next ";".
bool HidesNothing(std::string_view xml) {
  for (std::size_t at = 0; at < xml.size(); ++at) {
    for (std::size_t i = 1; i < CharacterSize(xml[at]); ++i) {
      if (at + i >= xml.size() || static_cast<unsigned char>(xml[at + i]) < 0x80) return false;
    }
    if (xml.substr(at, 2) != "&#") continue;
    std::size_t end = at + (xml.substr(at, 3) == "&#x" ? 3 : 2);
    while (end < xml.size() && IsHexDigit(xml[end])) ++end;
    if (end == xml.size() || xml[end] != ';') return false;
  }
  return true;
}

bool IsXmlWord(std::string_view text) {
  return text.size() >= 3 && (text[0] | 32) == 'x' && (text[1] | 32) == 'm' &&
         (text[2] | 32) == 'l';
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
  if (!HidesNothing(xml)) return true;
  int depth = 0;
  std::size_t at = SkipDeclaration(xml);
  if (at == kEnd) return true;
  for (at = xml.find('<', at); at != kEnd; at = xml.find('<', at)) {
    const std::string_view rest = xml.substr(at);
    if (rest.substr(0, 2) == "<?" && IsXmlWord(rest.substr(2))) {
      const std::size_t length = SkipDeclaration(rest);
      if (length == kEnd) return true;
      at += length;
    } else if (rest.substr(0, 4) == "<!--") {
      at = Behind(xml, "-->", at + 4);
    } else if (rest.substr(0, 9) == "<![CDATA[") {
      at = Behind(xml, "]]>", at + 9);
    } else if (OpensElement(xml, at)) {
      bool empty = false;
      at = SkipTag(xml, at, &empty);
      if (depth == limit) return true;
      if (!empty) ++depth;
    } else {
      if (rest.substr(0, 2) == "</" && depth > 0) --depth;
      at = Behind(xml, ">", at);
    }
  }
  return false;
}

}  // namespace account
