// Identifiers and the two forms of dates. All functions may be called from any thread.
#ifndef QORN_CORE_FW_ACCOUNT_SRC_IDENTIFIERS_H_
#define QORN_CORE_FW_ACCOUNT_SRC_IDENTIFIERS_H_

#include <string>

namespace account {

// What an identifier is for; its first character tells. The numbers are those of the callers.
inline constexpr int kUuidOfUser = 1;            // "1..."
inline constexpr int kUuidOfFriend = 2;          // "2..."
inline constexpr int kUuidOfFriendAuthCode = 3;  // "4..."
inline constexpr int kUuidOfNonce = 4;           // "5..."

// A new random UUID, 36 lower-case characters, whose first one is replaced by `first`.
std::string MakeUuidWithFirst(char first);

// A new UUID for one of the kinds above; any other kind begins with "0".
std::string MakeUuid(int kind);

// Now, as stored: decimal whole seconds since the Unix epoch.
std::string CurrentTimestamp();

// A stored date as it is handed out, in local time and without zero padding:
// "2013/11/11 Monday 8:0:0". Text that is not a number reads as far as it is one.
std::string FormatDate(const std::string& stored);

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_IDENTIFIERS_H_
