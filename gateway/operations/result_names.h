// The names and messages of the account interface's result codes, for people and scripts.
#ifndef QORN_GATEWAY_OPERATIONS_RESULT_NAMES_H_
#define QORN_GATEWAY_OPERATIONS_RESULT_NAMES_H_

#include <string>

namespace gateway {

// "Undefined Error code" for a code that the interface does not have.
const char* ResultMessage(int code);

// The constant's name, "kAccountNoUser"; "" for a code that the interface does not have.
const char* ResultName(int code);

// "answered 3 (Failure to connect to the account DB)".
std::string DescribeResult(int code);

// Reads a result as a script writes it: a number, a constant's name ("kAccountNoUser") or
// "success". False, with `code` untouched, for anything else.
bool ParseResult(const std::string& text, int* code);

// Reads a whole number in decimal, all of `text`. False, with `number` untouched, when it is none
// or does not fit.
bool ParseInt(const std::string& text, int* number);

}  // namespace gateway

#endif  // QORN_GATEWAY_OPERATIONS_RESULT_NAMES_H_
