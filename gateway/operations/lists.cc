#include "gateway/operations/lists.h"

#include <utility>

#include "gateway/operations/operations.h"

namespace gateway {
namespace {

// Adds the row of one user or friend: its UUIDs and what the operation reads of the last of them.
AccountResult AddRow(AccountManager& accounts, const Operation& operation, std::vector<Field> uuids,
                     int gone, FieldRows* rows) {
  Answer answer;
  std::string error;
  operation.Call(accounts, uuids.back().values, &answer, &error);
  if (answer.code == gone) return kAccountSuccess;
  std::vector<Field>& row = rows->emplace_back(std::move(uuids));
  row.insert(row.end(), answer.outputs.begin(), answer.outputs.end());
  return answer.code;
}

AccountResult ReadFriendsOf(AccountManager& accounts, const std::string& user_uuid,
                            FieldRows* friends) {
  static const Operation& information = *FindOperation("GetFriendInformation");
  std::vector<std::string> uuids;
  std::string user_id;
  AccountResult result = accounts.GetAllFriendsUUID(user_uuid, &uuids);
  if (!uuids.empty()) accounts.GetUserInfoByType(user_uuid, kUserInfoGetUserId, &user_id);
  for (size_t i = 0; i < uuids.size() && result == kAccountSuccess; ++i) {
    result =
        AddRow(accounts, information,
               {{"user_uuid", {user_uuid}}, {"user_id", {user_id}}, {"friend_uuid", {uuids[i]}}},
               kAccountNoFriendWithFriendUuid, friends);
  }
  return result;
}

}  // namespace

AccountResult ReadUsers(AccountManager& accounts, FieldRows* users) {
  static const Operation& information = *FindOperation("GetUserInformation");
  std::vector<std::string> uuids;
  AccountResult result = accounts.GetAllUsersUUID(&uuids);
  for (size_t i = 0; i < uuids.size() && result == kAccountSuccess; ++i) {
    result = AddRow(accounts, information, {{"user_uuid", {uuids[i]}}}, kAccountNoUserWithUserUuid,
                    users);
  }
  return result;
}

AccountResult ReadFriends(AccountManager& accounts, const std::string& user_uuid,
                          FieldRows* friends) {
  std::vector<std::string> users = {user_uuid};
  AccountResult result = kAccountSuccess;
  if (user_uuid.empty()) {
    users.clear();
    result = accounts.GetAllUsersUUID(&users);
  }
  for (size_t i = 0; i < users.size() && result == kAccountSuccess; ++i) {
    result = ReadFriendsOf(accounts, users[i], friends);
  }
  return result;
}

}  // namespace gateway
