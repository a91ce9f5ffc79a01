#ifndef QORN_PLATFORM_BASE_STRING_NUMBER_CONVERSIONS_H_
#define QORN_PLATFORM_BASE_STRING_NUMBER_CONVERSIONS_H_

#include <string>

namespace base {

// Reads a decimal number with an optional sign; true if `text` is nothing else. `*output` is
// written in any case, deliberately, and callers depend on it: leading white space is skipped but
// makes the answer false, a bad character ends the reading with what came before it ("12abc" gives
// 12, "" gives 0), and a number out of range gives INT_MAX or INT_MIN.
bool StringToInt(const std::string& text, int* output);

std::string IntToString(int value);

}  // namespace base

#endif  // QORN_PLATFORM_BASE_STRING_NUMBER_CONVERSIONS_H_
