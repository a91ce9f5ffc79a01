#ifndef QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_RESULT_H_
#define QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_RESULT_H_

#include <string>
#include <string_view>

namespace account {

// The message of an AccountResult, as it stands in the log; "Undefined Error code" for a number
// that is none. The view refers to static storage.
std::string_view AccountResultMessage(int code);

// The same as a string of the caller's own; the log takes the view, which costs no copy.
std::string AccountResultToString(int code);

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_RESULT_H_
