#include "bench/stored_users.h"

#include <cstdint>
#include <cstdio>

namespace bench {
namespace {

std::string Text(const char* format, long first, long second = 0) {
  char text[128];
  std::snprintf(text, sizeof(text), format, first, second);
  return text;
}

// A scattered number for each number: identifiers do not come in the order of their making.
long Scattered(long number) {
  constexpr std::uint64_t kFactor = 2654435761;
  return static_cast<long>(static_cast<std::uint64_t>(number) * kFactor & 0xffffffff);
}

}  // namespace

account::UserInfo UserNumber(long number) {
  account::UserInfo user;
  user.userUuid =
      Text("1%07lx-%04lx-4000-8000-00000000abcd", Scattered(number) >> 4, number & 0xffff);
  user.userId = Text("user%06ld@example.com", number);
  user.userName = Text("user%06ld", number);
  user.userGuid = Text("guid-%08lx-%08ld", Scattered(number), number);
  user.accessToken = Text("access-%08lx-3f2c9d5be1a04c7788aa00-%06ld", Scattered(number), number);
  user.refreshToken = Text("refresh-%08lx-3f2c9d5be1a04c7788aa00-%06ld", Scattered(number), number);
  user.registeredDate = "1700000000";
  user.lastSignInDate = "1700000001";
  user.lastInfoChangedDate = "1700000002";
  return user;
}

account::FriendInfo FriendNumber(long user, long number) {
  account::FriendInfo made;
  made.friendUuid =
      Text("2%07lx-%04lx-4000-8000-", Scattered(user * 1009 + number) >> 4, number & 0xffff) +
      Text("%012lx", user);
  made.friendId = Text("friend%04ld@example.com", number);
  made.friendName = Text("friend%04ld", number);
  made.friendGuid = Text("guid-%08lx-friend%04ld", Scattered(number), number);
  made.friendQorDeviceName = "Home";
  made.friendQorDevicePhysicalAddressText = Text("02-00-5E-%06lx", number);
  made.friendQorDevicePeerId = Text("PEER-02-00-5E-%06lx", number);
  return made;
}

void InsertUser(RawDatabase& database, const account::UserInfo& user) {
  database.Run(kInsertUser, {user.userUuid, user.userId, user.userName, user.userGuid,
                             user.accessToken, user.refreshToken, user.registeredDate,
                             user.lastSignInDate, user.lastInfoChangedDate});
}

void UpdateUser(RawDatabase& database, const account::UserInfo& user) {
  database.Run(kUpdateUser,
               {user.userId, user.userName, user.userGuid, user.accessToken, user.refreshToken,
                user.registeredDate, user.lastSignInDate, user.lastInfoChangedDate, user.userUuid});
}

void InsertFriend(RawDatabase& database, const std::string& owner,
                  const account::FriendInfo& friend_info) {
  database.Run(kInsertFriend,
               {friend_info.friendUuid, owner, friend_info.friendId, friend_info.friendName,
                friend_info.friendGuid, friend_info.friendQorDeviceName,
                friend_info.friendQorDevicePhysicalAddressText, friend_info.friendQorDevicePeerId});
}

void Fill(RawDatabase& database, long users, long friends_of_each) {
  database.Run("BEGIN");
  for (long i = 0; i < users; ++i) {
    const account::UserInfo user = UserNumber(i);
    InsertUser(database, user);
    for (long k = 0; k < friends_of_each; ++k) {
      InsertFriend(database, user.userUuid, FriendNumber(i, k));
    }
  }
  database.Run("COMMIT");
}

void TakeUser(sqlite3_stmt* row, account::UserInfo* user) {
  std::string* const fields[] = {
      &user->userUuid,       &user->userId,         &user->userName,
      &user->userGuid,       &user->accessToken,    &user->refreshToken,
      &user->registeredDate, &user->lastSignInDate, &user->lastInfoChangedDate};
  int column = 0;
  for (std::string* field : fields) RawDatabase::Take(row, column++, field);
}

void TakeFriend(sqlite3_stmt* row, account::FriendInfo* friend_info) {
  RawDatabase::Take(row, 0, &friend_info->friendUuid);
  std::string* const fields[] = {&friend_info->friendId,
                                 &friend_info->friendName,
                                 &friend_info->friendGuid,
                                 &friend_info->friendQorDeviceName,
                                 &friend_info->friendQorDevicePhysicalAddressText,
                                 &friend_info->friendQorDevicePeerId};
  int column = 2;  // After the owner.
  for (std::string* field : fields) RawDatabase::Take(row, column++, field);
}

}  // namespace bench
