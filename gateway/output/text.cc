#include "gateway/output/text.h"

#include <algorithm>

namespace gateway {
namespace {

constexpr size_t kShownCharacters = 4;
constexpr size_t kMaxClippedBytes = 60;

bool IsControl(char c) {
  const unsigned char byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7f;
}

// UTF-8 writes U+0080 to U+009F, which some terminals obey, as 0xc2 and one byte up to 0x9f.
bool IsC1At(const std::string& text, size_t at) {
  return text[at] == '\xc2' && at + 1 < text.size() && IsContinuationByte(text[at + 1]) &&
         static_cast<unsigned char>(text[at + 1]) <= 0x9f;
}

void AppendHex(char c, std::string* out) {
  constexpr char kDigits[] = "0123456789abcdef";
  const unsigned char byte = static_cast<unsigned char>(c);
  *out += "\\x";
  *out += kDigits[byte >> 4];
  *out += kDigits[byte & 0xf];
}

}  // namespace

bool IsContinuationByte(char c) { return (static_cast<unsigned char>(c) & 0xc0) == 0x80; }

bool IsNameStart(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

bool IsNamePart(char c) { return IsNameStart(c) || (c >= '0' && c <= '9'); }

bool HasControlCharacter(const std::string& text) {
  for (size_t at = 0; at < text.size(); ++at) {
    if (IsControl(text[at]) || IsC1At(text, at)) return true;
  }
  return false;
}

std::string Visible(const std::string& text) {
  std::string shown;
  for (size_t i = 0; i < text.size(); ++i) {
    if (IsC1At(text, i)) {
      AppendHex(text[i], &shown);
      AppendHex(text[++i], &shown);
    } else if (IsControl(text[i])) {
      AppendHex(text[i], &shown);
    } else {
      shown += text[i];
    }
  }
  return shown;
}

std::string ShortenSecret(const std::string& secret) {
  if (secret.empty()) return "";
  size_t characters = 0;
  for (size_t i = 0; i < secret.size(); ++i) {
    if (IsContinuationByte(secret[i])) continue;
    if (++characters > kShownCharacters) return secret.substr(0, i) + "…";
  }
  return "…";
}

std::string JoinWords(const std::vector<std::string>& words, size_t first) {
  std::string text;
  for (size_t i = first; i < words.size(); ++i) {
    if (i > first) text += ' ';
    text += words[i];
  }
  return text;
}

std::vector<std::string> SplitAtBlanks(const std::string& text) {
  std::vector<std::string> words;
  for (size_t at = text.find_first_not_of(' '); at != std::string::npos;) {
    const size_t end = std::min(text.find(' ', at), text.size());
    words.push_back(text.substr(at, end - at));
    at = text.find_first_not_of(' ', end);
  }
  return words;
}

std::string LowerCase(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

std::string Clip(const std::string& text) {
  size_t end = kMaxClippedBytes;
  if (text.size() <= end) return text;
  while (end > 0 && IsContinuationByte(text[end])) --end;
  return text.substr(0, end) + "…";
}

}  // namespace gateway
