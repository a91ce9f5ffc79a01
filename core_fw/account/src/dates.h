// The two forms of dates: as stored and as shown. Any thread.
#ifndef QORN_CORE_FW_ACCOUNT_SRC_DATES_H_
#define QORN_CORE_FW_ACCOUNT_SRC_DATES_H_

#include <string>

namespace account {

// The current time as it is stored: whole seconds since the Unix epoch, in decimal.
std::string CurrentTimestamp();

// A stored date as it is shown: local time, without zero padding, "2013/11/11 Monday 8:0:0". Of a
// text that is not a number, only the leading digits count; without any it is the epoch.
std::string FormatDate(const std::string& stored);

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_DATES_H_
