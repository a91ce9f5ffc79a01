#include "gateway/console/views.h"

#include <initializer_list>
#include <utility>
#include <vector>

#include "gateway/operations/operations.h"

namespace gateway {
namespace {

using Words = std::vector<std::string>;

// Calls an operation of the table, so that its outputs have their names.
AccountResult Call(AccountManager& accounts, const char* name, const Words& words,
                   std::vector<Field>* outputs) {
  Answer answer;
  std::string error;
  FindOperation(name)->call(accounts, words, &answer, &error);
  *outputs = std::move(answer.outputs);
  return answer.code;
}

// Adds the row of one user or friend: its UUIDs and what the operation reads of the last of them.
AccountResult AddRow(AccountManager& accounts, const char* operation,
                     const std::vector<Field>& uuids, int gone, Table* table) {
  std::vector<Field> fields;
  const AccountResult result = Call(accounts, operation, uuids.back().values, &fields);
  if (result == gone) return kAccountSuccess;
  std::vector<Field>& row = table->rows.emplace_back(uuids);
  row.insert(row.end(), fields.begin(), fields.end());
  return result;
}

}  // namespace

AccountResult ShowUsers(AccountManager& accounts, Printer* printer) {
  Table table{"user",
              {{"user_id", "USER"},
               {"user_name", "NAME"},
               {"sign_in_state", "SIGNED IN"},
               {"last_sign_in_date", "LAST SIGN-IN"},
               {"user_uuid", "UUID"}},
              {},
              "no users"};
  Words users;
  AccountResult result = accounts.GetAllUsersUUID(&users);
  for (size_t i = 0; i < users.size() && result == kAccountSuccess; ++i) {
    result = AddRow(accounts, "get-user-information", {{"user_uuid", {users[i]}}},
                    kAccountNoUserWithUserUuid, &table);
  }
  if (result == kAccountSuccess) printer->Show(table);
  return result;
}

AccountResult ShowFriends(AccountManager& accounts, const std::string& user_uuid,
                          Printer* printer) {
  Table table{"friend",
              {{"user_id", "USER"},
               {"friend_id", "FRIEND"},
               {"friend_device_name", "GATEWAY"},
               {"friend_peer_id", "PEER ID"},
               {"friend_uuid", "UUID"}},
              {},
              "no friends"};
  Words users = {user_uuid};
  AccountResult result = kAccountSuccess;
  if (user_uuid.empty()) {
    users.clear();
    result = accounts.GetAllUsersUUID(&users);
  }
  for (size_t i = 0; i < users.size() && result == kAccountSuccess; ++i) {
    Words friends;
    std::string user_id;
    result = accounts.GetAllFriendsUUID(users[i], &friends);
    if (!friends.empty()) accounts.GetUserInfoByType(users[i], kUserInfoGetUserId, &user_id);
    for (size_t j = 0; j < friends.size() && result == kAccountSuccess; ++j) {
      result =
          AddRow(accounts, "get-friend-information",
                 {{"user_uuid", {users[i]}}, {"user_id", {user_id}}, {"friend_uuid", {friends[j]}}},
                 kAccountNoFriendWithFriendUuid, &table);
    }
  }
  if (result == kAccountSuccess) printer->Show(table);
  return result;
}

void NoteStoredIds(AccountManager& accounts, Sightings* sightings) {
  std::vector<std::string> users;
  accounts.GetAllUsersUUID(&users);
  sightings->NoteFields({{"user_uuids", users}});
  for (const std::string& user : users) {
    std::vector<Field> fields;
    Call(accounts, "get-user-information", {user}, &fields);
    sightings->NoteFields(fields);
    std::vector<std::string> friends;
    accounts.GetAllFriendsUUID(user, &friends);
    sightings->NoteFields({{"friend_uuids", friends}});
    for (const std::string& friend_uuid : friends) {
      Call(accounts, "get-friend-information", {friend_uuid}, &fields);
      sightings->NoteFields(fields);
    }
  }
}

}  // namespace gateway
