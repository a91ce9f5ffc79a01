// Records and tables as people read them.
#ifndef QORN_GATEWAY_OUTPUT_TABLES_H_
#define QORN_GATEWAY_OUTPUT_TABLES_H_

#include <string>

#include "gateway/output/records.h"

namespace gateway {

// What a colour says; themes of terminals map them to colours of their own.
enum class Tone { kPlain, kEvent, kError, kTitle, kQuiet };

// The text in the tone's colour, or as it is when there is none.
std::string Paint(const std::string& text, Tone tone, bool color);

// The head, then each value on a line of its own after its name. Control characters are made
// visible and secrets shortened unless they are to be shown.
std::string LayOut(const Record& record, bool show_secrets, bool color);

// Columns as wide as their widest cell; East Asian and combining characters count as wide as a
// terminal draws them (LC_CTYPE must be a UTF-8 locale).
std::string LayOut(const Table& table, bool show_secrets, bool color);

// How many columns of a terminal the text takes.
size_t DisplayWidth(const std::string& text);

// The text and as many blanks behind it as are missing to `width` columns.
std::string PadTo(const std::string& text, size_t width);

// The text broken at its blanks into lines of at most `columns`; 0 leaves it whole. The first line
// has `taken` columns before it already, the others are indented by `indent`. A word that is longer
// than a line stays whole.
std::string Wrap(const std::string& text, size_t taken, size_t indent, size_t columns);

}  // namespace gateway

#endif  // QORN_GATEWAY_OUTPUT_TABLES_H_
