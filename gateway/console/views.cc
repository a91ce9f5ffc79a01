#include "gateway/console/views.h"

#include <algorithm>
#include <utility>

#include "gateway/operations/operations.h"

namespace gateway {
namespace {

// Users' and friends' rows hold the outputs of these two and the UUIDs that they are found by.
std::vector<Parameter> RowParameters() {
  std::vector<Parameter> parameters = {parameter::kUserUuid, parameter::kFriendUuid};
  for (const char* name : {"GetUserInformation", "GetFriendInformation"}) {
    const std::vector<Parameter>& outputs = FindOperation(name)->outputs;
    parameters.insert(parameters.end(), outputs.begin(), outputs.end());
  }
  return parameters;
}

// Adds a column that says who must sign in, unless nobody must. A row begins with the user's UUID.
void MarkSignInNeeded(const std::vector<std::string>& uuids, Table* users) {
  if (uuids.empty()) return;
  users->columns.insert(users->columns.begin() + 3, {"sign_in_needed", "MUST SIGN IN"});
  for (std::vector<Field>& row : users->rows) {
    const bool needed = std::find(uuids.begin(), uuids.end(), row[0].values.at(0)) != uuids.end();
    row.push_back({.name = "sign_in_needed",
                   .values = {needed ? "true" : "false"},
                   .shape = Field::Shape::kFlag});
  }
}

}  // namespace

void UseAccounts(AccountManager* accounts, ConsoleServices* services) {
  services->accounts = accounts;
  services->list_users = [accounts](FieldRows* users) { return ReadUsers(*accounts, users); };
  services->list_friends = [accounts](const std::string& user_uuid, FieldRows* friends) {
    return ReadFriends(*accounts, user_uuid, friends);
  };
}

AccountResult ShowUsers(const ConsoleServices& services, Printer* printer) {
  Table table{.type = "user",
              .columns = {{"user_id", "USER"},
                          {"user_name", "NAME"},
                          {"sign_in_state", "SIGNED IN"},
                          {"last_sign_in_date", "LAST SIGN-IN"},
                          {"user_uuid", "UUID"}},
              .empty = "no users"};
  const AccountResult result = services.list_users(&table.rows);
  if (result == kAccountSuccess) MarkSignInNeeded(services.sign_in_needed(), &table);
  if (result == kAccountSuccess) printer->Show(table);
  return result;
}

AccountResult ShowFriends(const ConsoleServices& services, const std::string& user_uuid,
                          Printer* printer) {
  Table table{.type = "friend",
              .columns = {{"user_id", "USER"},
                          {"friend_id", "FRIEND"},
                          {"friend_device_name", "GATEWAY"},
                          {"friend_peer_id", "PEER ID"},
                          {"friend_uuid", "UUID"}},
              .empty = "no friends"};
  const AccountResult result = services.list_friends(user_uuid, &table.rows);
  if (result == kAccountSuccess) printer->Show(table);
  return result;
}

void NoteStoredIds(const ConsoleServices& services, SeenIds* seen_ids) {
  const std::vector<Parameter> parameters = RowParameters();
  FieldRows rows;
  services.list_users(&rows);
  services.list_friends("", &rows);
  for (const std::vector<Field>& row : rows) seen_ids->NoteFields(parameters, row);
}

}  // namespace gateway
