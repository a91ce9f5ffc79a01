// Small pure functions on the text that the console reads and shows.
#ifndef QORN_GATEWAY_OUTPUT_TEXT_H_
#define QORN_GATEWAY_OUTPUT_TEXT_H_

#include <string>
#include <vector>

namespace gateway {

// ASCII letters and "_", in any locale; IsNamePart accepts digits too.
bool IsNameStart(char c);
bool IsNamePart(char c);

// Whether the byte continues a UTF-8 character that an earlier byte began.
bool IsContinuationByte(char c);

// Whether the text holds a byte below 0x20, 0x7f, or U+0080 to U+009F: each may steer a terminal or
// end a line of an HTTP header.
bool HasControlCharacter(const std::string& text);

// The text with control characters, the two-byte C1 ones included, written as \xNN: text
// from a cloud must not control the terminal.
std::string Visible(const std::string& text);

// The first four characters and "…"; "…" alone for a text of four characters or fewer; "" for "".
std::string ShortenSecret(const std::string& secret);

// The words from `first` on, joined by single blanks.
std::string JoinWords(const std::vector<std::string>& words, size_t first = 0);

// Splits at blanks; quotes mean nothing.
std::vector<std::string> SplitAtBlanks(const std::string& text);

// With small ASCII letters.
std::string LowerCase(std::string text);

// The text, cut off after 60 bytes with "…": what was typed wrong, repeated in an error.
std::string Clip(const std::string& text);

}  // namespace gateway

#endif  // QORN_GATEWAY_OUTPUT_TEXT_H_
