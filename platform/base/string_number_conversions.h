#ifndef QORN_PLATFORM_BASE_STRING_NUMBER_CONVERSIONS_H_
#define QORN_PLATFORM_BASE_STRING_NUMBER_CONVERSIONS_H_

#include <string>

namespace base {

// Converts a decimal number with an optional sign; true if `text` contains nothing else. `*output`
// is deliberately always written, and callers depend on it: leading white space is skipped but
// makes the result false, an invalid character ends the conversion with the digits before it
// ("12abc" gives 12,
// "" gives 0), and a number out of range gives INT_MAX or INT_MIN.
bool StringToInt(const std::string& text, int* output);

std::string IntToString(int value);

}  // namespace base

#endif  // QORN_PLATFORM_BASE_STRING_NUMBER_CONVERSIONS_H_
