// Small pure functions on the text that the console reads and shows.
#ifndef QORN_GATEWAY_OUTPUT_TEXT_H_
#define QORN_GATEWAY_OUTPUT_TEXT_H_

#include <string>
#include <vector>

namespace gateway {

// ASCII letters and "_"; IsNamePart takes digits too. No locale is looked at.
bool IsNameStart(char c);
bool IsNamePart(char c);

// Whether a byte of UTF-8 goes on with a character that began before it.
bool IsContinuationByte(char c);

// Whether the text holds a byte below 0x20 or 0x7f.
bool HasControlCharacter(const std::string& text);

// The text with control characters, the two-byte C1 ones included, written as \xNN: what a cloud
// sent must not steer a terminal.
std::string Visible(const std::string& text);

// The first four characters and "…"; "…" alone for a text of four characters or fewer; "" for "".
std::string ShortenSecret(const std::string& secret);

// The words with one blank between them, from the word at `first` on.
std::string JoinWords(const std::vector<std::string>& words, size_t first = 0);

// The words between the blanks of a text without quotes.
std::vector<std::string> SplitAtBlanks(const std::string& text);

// The text, cut off after 60 bytes with "…": what was typed wrong, repeated in an error.
std::string Clip(const std::string& text);

}  // namespace gateway

#endif  // QORN_GATEWAY_OUTPUT_TEXT_H_
