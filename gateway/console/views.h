// All users and all friends, read through the account interface.
#ifndef QORN_GATEWAY_CONSOLE_VIEWS_H_
#define QORN_GATEWAY_CONSOLE_VIEWS_H_

#include <string>

#include "gateway/console/services.h"
#include "gateway/operations/seen_ids.h"
#include "gateway/output/printer.h"

namespace gateway {

// Makes the services use these accounts, borrowed, for operations and tables.
void UseAccounts(AccountManager* accounts, ConsoleServices* services);

// Shows all users. The code of the operation that failed, if one did; then nothing is shown. A user
// who was removed before it could be read is left out.
AccountResult ShowUsers(const ConsoleServices& services, Printer* printer);

// Shows the friends of the user, or of all users for "". Fails as ShowUsers does.
AccountResult ShowFriends(const ConsoleServices& services, const std::string& user_uuid,
                          Printer* printer);

// Notes the IDs of all stored users and friends.
void NoteStoredIds(const ConsoleServices& services, SeenIds* seen_ids);

}  // namespace gateway

#endif  // QORN_GATEWAY_CONSOLE_VIEWS_H_
