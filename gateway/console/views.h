// All users and all friends, read through the account interface.
#ifndef QORN_GATEWAY_CONSOLE_VIEWS_H_
#define QORN_GATEWAY_CONSOLE_VIEWS_H_

#include <string>

#include "core_fw/account/include/account_manager.h"
#include "gateway/operations/seen_ids.h"
#include "gateway/output/printer.h"

namespace gateway {

// Shows all users. The code of the operation that failed, if one did; then nothing is shown. A user
// who was removed before it could be read is left out.
AccountResult ShowUsers(AccountManager& accounts, Printer* printer);

// Shows the friends of the user, or of all users for "". Fails as ShowUsers does.
AccountResult ShowFriends(AccountManager& accounts, const std::string& user_uuid, Printer* printer);

// Notes the IDs of all stored users and friends.
void NoteStoredIds(AccountManager& accounts, SeenIds* seen_ids);

}  // namespace gateway

#endif  // QORN_GATEWAY_CONSOLE_VIEWS_H_
