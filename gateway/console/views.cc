#include "gateway/console/views.h"

#include <initializer_list>
#include <utility>
#include <vector>

#include "gateway/operations/operations.h"

namespace gateway {
namespace {

using Words = std::vector<std::string>;

// Calls an operation by name, so that the cells get the names of its outputs.
AccountResult Call(AccountManager& accounts, const char* name, const Words& words,
                   std::vector<Field>* outputs) {
  Answer answer;
  std::string error;
  FindOperation(name)->Call(accounts, words, &answer, &error);
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
  Table table{.type = "user",
              .columns = {{"user_id", "USER"},
                          {"user_name", "NAME"},
                          {"sign_in_state", "SIGNED IN"},
                          {"last_sign_in_date", "LAST SIGN-IN"},
                          {"user_uuid", "UUID"}},
              .empty = "no users"};
  Words users;
  AccountResult result = accounts.GetAllUsersUUID(&users);
  for (size_t i = 0; i < users.size() && result == kAccountSuccess; ++i) {
    result = AddRow(accounts, "GetUserInformation", {{"user_uuid", {users[i]}}},
                    kAccountNoUserWithUserUuid, &table);
  }
  if (result == kAccountSuccess) printer->Show(table);
  return result;
}

AccountResult ShowFriends(AccountManager& accounts, const std::string& user_uuid,
                          Printer* printer) {
  Table table{.type = "friend",
              .columns = {{"user_id", "USER"},
                          {"friend_id", "FRIEND"},
                          {"friend_device_name", "GATEWAY"},
                          {"friend_peer_id", "PEER ID"},
                          {"friend_uuid", "UUID"}},
              .empty = "no friends"};
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
          AddRow(accounts, "GetFriendInformation",
                 {{"user_uuid", {users[i]}}, {"user_id", {user_id}}, {"friend_uuid", {friends[j]}}},
                 kAccountNoFriendWithFriendUuid, &table);
    }
  }
  if (result == kAccountSuccess) printer->Show(table);
  return result;
}

void NoteStoredIds(AccountManager& accounts, SeenIds* seen_ids) {
  // The words that an operation answers, which name the next one's argument.
  const auto note = [&](const char* name, const Words& words) {
    std::vector<Field> outputs;
    Call(accounts, name, words, &outputs);
    seen_ids->NoteFields(FindOperation(name)->outputs, outputs);
    return outputs.empty() ? Words() : outputs[0].values;
  };
  for (const std::string& user : note("GetAllUsersUUID", {})) {
    note("GetUserInformation", {user});
    for (const std::string& friend_uuid : note("GetAllFriendsUUID", {user})) {
      note("GetFriendInformation", {friend_uuid});
    }
  }
}

}  // namespace gateway
