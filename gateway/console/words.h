// Cuts a console line into words.
#ifndef QORN_GATEWAY_CONSOLE_WORDS_H_
#define QORN_GATEWAY_CONSOLE_WORDS_H_

#include <string>
#include <vector>

#include "gateway/console/variables.h"

namespace gateway {

// Words are divided by blanks and tabs. As in a shell: 'single quotes' keep everything, in "double
// quotes" a backslash stands before ", \ and $ only, a backslash outside quotes keeps the next
// character, "#" at the start of a word begins a comment, adjoining pieces are one word, "" is an
// empty word. $name and ${name} are replaced outside single quotes; the value is never cut into
// words. A "$" before anything but a name or "{" stands for itself.
//
// False with one line in `error` for an unclosed quote, a lone backslash at the end, an unknown
// variable, or a control character in a word. `words` holds the words on success only.
bool SplitWords(const std::string& line, const Variables& variables,
                std::vector<std::string>* words, std::string* error);

// Where the last word of a line that is being typed begins.
size_t LastWordStart(const std::string& line);

// The text as it has to be typed to be one word that stands for itself.
std::string EscapeWord(const std::string& text);

}  // namespace gateway

#endif  // QORN_GATEWAY_CONSOLE_WORDS_H_
