#include "gateway/maintenance/redaction.h"

#include <algorithm>
#include <regex>
#include <sstream>
#include <string_view>
#include <utility>

#include "gateway/output/text.h"

namespace gateway {
namespace {

// Shorter values may be parts of words.
constexpr size_t kLongBytes = 8;
// A value that agrees so far may have been cut off.
constexpr size_t kPrefixBytes = 64;
// The pattern search recurses for each byte. The parts overlap, so that no value is cut in all of
// them.
constexpr size_t kPartBytes = 4096;
constexpr size_t kOverlapBytes = 512;
// Of an e-mail address: RFC 5321, section 4.5.3.1.
constexpr size_t kMaxLocalBytes = 64;
constexpr size_t kMaxDomainBytes = 255;
constexpr int kDecodings = 3;

unsigned char Small(char c) {
  return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
}

bool IsWordByte(char c) { return (Small(c) >= 'a' && Small(c) <= 'z') || (c >= '0' && c <= '9'); }

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  return Small(c) >= 'a' && Small(c) <= 'f' ? Small(c) - 'a' + 10 : -1;
}

// Reads the escape of a byte: %40, \x40, \u0040, \" or \\. Returns its length; 0 for none.
size_t ReadEscape(const std::string& text, size_t position, char* byte) {
  const std::string_view rest = std::string_view(text).substr(position, 6);
  const size_t prefix = rest.starts_with("%")       ? 1
                        : rest.starts_with("\\x")   ? 2
                        : rest.starts_with("\\u00") ? 4
                                                    : 0;
  if (prefix > 0 && rest.size() >= prefix + 2 && HexValue(rest[prefix]) >= 0 &&
      HexValue(rest[prefix + 1]) >= 0) {
    *byte = static_cast<char>(HexValue(rest[prefix]) * 16 + HexValue(rest[prefix + 1]));
    return prefix + 2;
  }
  if (!rest.starts_with("\\\"") && !rest.starts_with("\\\\")) return 0;
  *byte = rest[1];
  return 2;
}

bool IsWholeWord(const std::string& text, size_t begin, size_t end) {
  char ignored = 0;
  const bool begins = begin == 0 || !IsWordByte(text[begin - 1]) ||
                      (begin >= 3 && ReadEscape(text, begin - 3, &ignored) == 3);
  return begins && (end == text.size() || !IsWordByte(text[end]));
}

// With the letters, digits and "-" that are next to it.
std::string WordAround(const std::string& text, size_t begin, size_t end) {
  const auto belongs = [](char c) { return IsWordByte(c) || c == '-'; };
  while (begin > 0 && belongs(text[begin - 1])) --begin;
  while (end < text.size() && belongs(text[end])) ++end;
  return text.substr(begin, end - begin);
}

std::string Decoded(const std::string& text) {
  std::string decoded;
  for (size_t i = 0; i < text.size();) {
    char byte = text[i];
    i += std::max<size_t>(ReadEscape(text, i, &byte), 1);
    decoded += byte;
  }
  return decoded;
}

bool BelongsToLocalPart(char c) {
  return IsWordByte(c) || c == '_' || c == '.' || c == '+' || c == '-';
}

// The e-mail address around an "@" of `bytes` bytes at the position; "" for none.
std::string EmailAround(const std::string& line, size_t position, size_t bytes) {
  size_t begin = position;
  while (begin > 0 && position - begin < kMaxLocalBytes && BelongsToLocalPart(line[begin - 1])) {
    --begin;
  }
  // The digits of an escape begin no address.
  if (begin > 0 && line[begin - 1] == '%') begin = std::min(begin + 2, position);
  size_t end = position + bytes;
  const size_t domain = end;
  size_t dots = 0;
  for (; end < line.size() && end - domain < kMaxDomainBytes; ++end) {
    const bool dot = line[end] == '.' && end > domain && line[end - 1] != '.';
    if (!dot && !IsWordByte(line[end]) && line[end] != '_' && line[end] != '-') break;
    if (dot) ++dots;
  }
  if (dots > 0 && line[end - 1] == '.') --end, --dots;
  return begin == position || dots == 0 ? "" : line.substr(begin, end - begin);
}

}  // namespace

void Redaction::Add(const std::string& kind, const std::string& value) {
  if (value.empty()) return;
  auto [place, added] = replacements_.emplace(LowerCase(value), "");
  if (!added) return;
  place->second = kind + "-" + std::to_string(++counts_[kind]);
  std::vector<Value>& values = values_[Small(value.front())];
  const auto shorter = std::find_if(values.begin(), values.end(), [&](const Value& other) {
    return other.text.size() < value.size();
  });
  values.insert(shorter, {value, place->second});
}

void Redaction::AddEmails(const std::string& line) {
  for (size_t i = 0; i < line.size(); ++i) {
    const size_t bytes = line[i] == '@' ? 1 : line.compare(i, 3, "%40") == 0 ? 3 : 0;
    if (bytes > 0) Add("user", Decoded(EmailAround(line, i, bytes)));
  }
}

void Redaction::AddPatterns(const std::string& text) {
  // Escapes are stepped over, so that none of their digits begins a value.
  static const std::string kEscapes = "(?:%[0-9a-fA-F]{2})*";
  static const std::pair<const char*, std::regex> kPatterns[] = {
      {"uuid", std::regex(kEscapes + "([0-9a-fA-F]{8}(?:-[0-9a-fA-F]{4}){3}-[0-9a-fA-F]{12})")},
      {"address", std::regex(kEscapes + "([0-9a-fA-F]{2}(?:[:-][0-9a-fA-F]{2}){5})")},
      {"token", std::regex(kEscapes + "([0-9a-fA-F]{32,})")},
  };
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    AddEmails(line);
    for (size_t begin = 0; begin < line.size(); begin += kPartBytes - kOverlapBytes) {
      const std::string part = line.substr(begin, kPartBytes);
      for (const auto& [kind, pattern] : kPatterns) {
        for (std::sregex_iterator found(part.begin(), part.end(), pattern), end; found != end;
             ++found) {
          Add(kind, Decoded((*found)[1].str()));
        }
      }
    }
  }
}

size_t Redaction::MatchAt(const std::string& text, size_t position, const std::string& value) {
  size_t end = position;
  size_t matched = 0;
  for (; matched < value.size() && end < text.size(); ++matched) {
    char byte = 0;
    if (Small(text[end]) == Small(value[matched]) ||
        (text[end] == '+' && value[matched] == ' ')) {  // In a form's encoding.
      ++end;
    } else if (const size_t length = ReadEscape(text, end, &byte);
               length > 0 && Small(byte) == Small(value[matched])) {
      end += length;
    } else {
      break;
    }
  }
  if (matched < std::min(value.size(), kPrefixBytes)) return 0;
  if (value.size() < kLongBytes && !IsWholeWord(text, position, end)) return 0;
  return end - position;
}

const Redaction::Value* Redaction::FindAt(const std::string& text, size_t position,
                                          size_t* length) const {
  const Value* best = nullptr;
  *length = 0;
  char decoded = text[position];
  ReadEscape(text, position, &decoded);
  for (const char first : {text[position], decoded}) {
    for (const Value& value : values_[Small(first)]) {
      const size_t matched = MatchAt(text, position, value.text);
      if (matched <= *length) continue;
      *length = matched;
      best = &value;
    }
    if (decoded == text[position]) break;
  }
  return best;
}

std::string Redaction::Redact(const std::string& text) const {
  std::string redacted;
  for (size_t i = 0; i < text.size();) {
    size_t length = 0;
    if (const Value* value = FindAt(text, i, &length)) {
      redacted += value->replacement;
      i += length;
    } else {
      redacted += text[i++];
    }
  }
  return redacted;
}

bool Redaction::IsClean(const std::string& text) const {
  std::string decoded = text;
  for (int i = 0; i < kDecodings; ++i) {
    for (size_t position = 0; position < decoded.size(); ++position) {
      size_t length = 0;
      const Value* const value = FindAt(decoded, position, &length);
      if (value == nullptr) continue;
      // A user may be called "user", which is in every replacement.
      const std::string word = WordAround(decoded, position, position + length);
      if (std::none_of(replacements_.begin(), replacements_.end(),
                       [&](const auto& known) { return known.second == word; })) {
        return false;
      }
    }
    decoded = Decoded(decoded);
  }
  return true;
}

}  // namespace gateway
