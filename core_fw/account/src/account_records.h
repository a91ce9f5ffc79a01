// The records that the layers pass to each other, and the system account.
#ifndef QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_RECORDS_H_
#define QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_RECORDS_H_

#include <string>

namespace account {

// One row of Users, in the order of the columns.
struct UserInfo {
  std::string userUuid;
  std::string userId;
  std::string userName;
  std::string userGuid;
  std::string accessToken;
  std::string refreshToken;
  std::string registeredDate;
  std::string lastSignInDate;
  std::string lastInfoChangedDate;
};

// One row of Friends without its owner, which the caller knows.
struct FriendInfo {
  std::string friendUuid;
  std::string friendId;
  std::string friendName;
  std::string friendGuid;
  std::string friendQorDeviceName;
  std::string friendQorDevicePhysicalAddressText;
  std::string friendQorDevicePeerId;
};

// The built-in system account has no row; its ID is also its UUID, name and GUID.
inline constexpr char kSystemAccountId[] = "qornsystem";
inline constexpr char kSystemAccountPassword[] = "mivu5830";

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_RECORDS_H_
