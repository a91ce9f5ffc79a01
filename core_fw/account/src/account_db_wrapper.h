#ifndef QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_DB_WRAPPER_H_
#define QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_DB_WRAPPER_H_

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "base/file_path.h"
#include "base/lock.h"
#include "base/thread_annotations.h"
#include "core_fw/account/include/account_manager.h"
#include "core_fw/account/src/account_records.h"
#include "sql/connection.h"
#include "sql/statement.h"

namespace account {

// The account store: tables Users and Friends in one SQLite file, and every statement on them.
//
// Any thread. One lock is held for a whole operation, including waits for a locked database, so
// operations are serialised. Every operation returns 3 while the store is not initialised and 4 if
// its statement cannot be prepared. A writing statement returns 1 once it is prepared: whether it
// then succeeds is deliberately not checked. Outputs are written on success only.
class AccountDBWrapper {
 public:
  AccountDBWrapper();
  ~AccountDBWrapper();  // Closes the file.
  AccountDBWrapper(const AccountDBWrapper&) = delete;
  AccountDBWrapper& operator=(const AccountDBWrapper&) = delete;

  // Opens the configured file and creates missing tables. False, logged, on failure; it may be
  // called again.
  bool Init();
  bool CheckAndCreateTable();

  // 12 if the user ID is already stored, else 13 if the GUID is.
  AccountResult AddUser(const UserInfo& user);
  // Deliberately leaves the user's friends in place.
  AccountResult RemoveUser(const std::string& user_uuid);
  AccountResult ModifyUser(const UserInfo& user);
  // 14 if the owner has a friend with this ID, whatever its peer ID.
  AccountResult AddFriend(const std::string& user_uuid, const FriendInfo& friend_info);
  AccountResult RemoveFriend(const std::string& friend_uuid);
  AccountResult DeleteAll();

  // 6, 5, 9, 5 and 8 if there is no such row; of several rows the last one counts. The system
  // account is found without lock and database.
  AccountResult GetUserByUserUuid(const std::string& user_uuid, UserInfo& user);
  AccountResult GetUserByUserId(const std::string& user_id, UserInfo& user);
  AccountResult GetFriend(const std::string& friend_uuid, FriendInfo& friend_info);
  AccountResult GetUserUUIDFromUserID(const std::string& user_id, std::string& user_uuid);
  AccountResult GetFriendUUIDFromFriendIDAndFriendPeerID(const std::string& user_uuid,
                                                         const std::string& friend_id,
                                                         const std::string& friend_peer_id,
                                                         std::string& friend_uuid);

  // Appends to the list; the system account is always the last of the users.
  AccountResult GetAllUsersUuidList(std::vector<std::string>& user_uuids);
  AccountResult GetAllFriendsUuidList(const std::string& user_uuid,
                                      std::vector<std::string>& friend_uuids);

  AccountResult GetSystemAccount(UserInfo& user);

 private:
  using Values = std::initializer_list<const std::string*>;

  // Prepares a statement and binds its values. 1, 3, or 4 with the failure logged under `function`.
  AccountResult Prepare(const char* function, const char* sql, Values values,
                        sql::Statement* statement) EXCLUSIVE_LOCKS_REQUIRED(lock_);
  AccountResult Write(const char* function, const char* sql, Values values)
      EXCLUSIVE_LOCKS_REQUIRED(lock_);
  // 1 if no row matches, `duplicate` if one does.
  AccountResult RefuseRows(const char* function, const char* sql, Values values,
                           AccountResult duplicate) EXCLUSIVE_LOCKS_REQUIRED(lock_);
  // Passes every row to `take`; `not_found` if there is none.
  template <typename Take>
  AccountResult ReadRows(const char* function, const char* sql, Values values,
                         AccountResult not_found, Take take) LOCKS_EXCLUDED(lock_);
  bool CreateTable(const char* name, const char* sql, const char* failure)
      EXCLUSIVE_LOCKS_REQUIRED(lock_);

  std::unique_ptr<sql::Connection> connection_ GUARDED_BY(lock_);
  FilePath path_ GUARDED_BY(lock_);
  bool initialised_ GUARDED_BY(lock_) = false;
  base::Lock lock_;
};

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_DB_WRAPPER_H_
