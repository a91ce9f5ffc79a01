// Identifiers, and the names that are made from them. Any thread.
#ifndef QORN_CORE_FW_ACCOUNT_SRC_IDENTIFIERS_H_
#define QORN_CORE_FW_ACCOUNT_SRC_IDENTIFIERS_H_

#include <string>

namespace account {

// What an identifier is for. The comment shows its first character, by which people who read a log
// or the database tell the kinds apart.
inline constexpr int kUuidOfUser = 1;            // "1..."
inline constexpr int kUuidOfFriend = 2;          // "2..."
inline constexpr int kUuidOfFriendAuthCode = 3;  // "4..."
inline constexpr int kUuidOfNonce = 4;           // "5..."

// A new random UUID in lower case, 36 characters, with its first character replaced by `first`.
std::string MakeUuidWithFirst(char first);

// A new UUID for one of the kinds above; any other kind begins with "0".
std::string MakeUuid(int kind);

// The display name of an account: what precedes the first "@" of its ID, or `fallback` if there is
// none.
std::string NameFromId(const std::string& id, const char* fallback);

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_IDENTIFIERS_H_
