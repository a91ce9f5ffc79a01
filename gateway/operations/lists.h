// All users and all friends, row by row through the account interface.
#ifndef QORN_GATEWAY_OPERATIONS_LISTS_H_
#define QORN_GATEWAY_OPERATIONS_LISTS_H_

#include <string>
#include <vector>

#include "core_fw/account/include/account_manager.h"
#include "gateway/output/records.h"

namespace gateway {

using FieldRows = std::vector<std::vector<Field>>;

// A row for each user: its UUID and the outputs of GetUserInformation. The code of the operation
// that failed, if one did. A user who is removed before it can be read is left out.
AccountResult ReadUsers(AccountManager& accounts, FieldRows* users);

// A row for each friend of the user, or of all users for "": the user's UUID and ID, the friend's
// UUID and the outputs of GetFriendInformation. Fails as ReadUsers does.
AccountResult ReadFriends(AccountManager& accounts, const std::string& user_uuid,
                          FieldRows* friends);

}  // namespace gateway

#endif  // QORN_GATEWAY_OPERATIONS_LISTS_H_
