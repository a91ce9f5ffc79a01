// Records and tables as JSON (RFC 8259), one object a line.
#ifndef QORN_GATEWAY_OUTPUT_JSON_LINES_H_
#define QORN_GATEWAY_OUTPUT_JSON_LINES_H_

#include <string>

#include "gateway/output/records.h"

namespace gateway {

// Members stand in the order of the record. Numbers and flags are JSON numbers and booleans, lists
// arrays, everything else strings; bytes that are no UTF-8 become U+FFFD. Each line ends with a
// line break.
std::string JsonLine(const Record& record, bool show_secrets);
std::string JsonLines(const Table& table, bool show_secrets);

}  // namespace gateway

#endif  // QORN_GATEWAY_OUTPUT_JSON_LINES_H_
