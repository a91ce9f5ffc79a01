// Records and tables as people read them.
#ifndef QORN_GATEWAY_OUTPUT_TABLES_H_
#define QORN_GATEWAY_OUTPUT_TABLES_H_

#include <string>

#include "gateway/output/records.h"

namespace gateway {

// What the terminal's colours are used for.
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

}  // namespace gateway

#endif  // QORN_GATEWAY_OUTPUT_TABLES_H_
