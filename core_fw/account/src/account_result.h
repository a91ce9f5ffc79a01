#ifndef QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_RESULT_H_
#define QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_RESULT_H_

#include <string>
#include <string_view>

namespace account {

// The message of an AccountResult, as the log shows it; "Undefined Error code" for any other
// number. The view refers to static storage.
std::string_view AccountResultMessage(int code);

// The same as a string. Log lines use the view, which needs no copy.
std::string AccountResultToString(int code);

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_RESULT_H_
