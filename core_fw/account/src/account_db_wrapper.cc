#include "core_fw/account/src/account_db_wrapper.h"

#include <stdexcept>

#include "base/location.h"
#include "base/path_service.h"
#include "base/platform_thread.h"
#include "base/time.h"
#include "core_fw/account/src/account_config.h"
#include "core_fw/account/src/account_log.h"

namespace account {
namespace {

constexpr char kCreateUsers[] =
    "CREATE TABLE Users (userUuid VARCHAR(256) PRIMARY KEY, userId VARCHAR(128), userName "
    "VARCHAR(64), userGuid VARCHAR(256), accessToken VARCHAR(256), refreshToken VARCHAR(256), "
    "registeredDate VARCHAR(64), lastSignInDate VARCHAR(64), lastInfoChangedDate VARCHAR(64));";
constexpr char kCreateFriends[] =
    "CREATE TABLE Friends (friendUuid VARCHAR(256) PRIMARY KEY, userUuid VARCHAR(256), friendId "
    "VARCHAR(128), friendName VARCHAR(64), friendGuid VARCHAR(128), friendQorDeviceName "
    "VARCHAR(64), friendQorDevicePhysicalAddressText VARCHAR(256), friendQorDevicePeerId "
    "VARCHAR(256));";

constexpr char kSelectUserById[] = "SELECT * FROM Users WHERE userId=?";
constexpr char kSelectUserByGuid[] = "SELECT * FROM Users WHERE userGuid=?";
constexpr char kSelectUserByUuid[] = "SELECT * FROM Users WHERE userUuid=?";
constexpr char kSelectUuidById[] = "SELECT userUuid FROM Users WHERE userId=?";
constexpr char kSelectAllUserUuids[] = "SELECT userUuid FROM Users";
constexpr char kInsertUser[] =
    "INSERT INTO Users ( userUuid , userId , userName , userGuid , accessToken , refreshToken , "
    "registeredDate , lastSignInDate , lastInfoChangedDate ) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)";
constexpr char kUpdateUser[] =
    "UPDATE Users SET userId=?, userName=?, userGuid=?, accessToken=?, refreshToken=?, "
    "registeredDate=?, lastSignInDate=?, lastInfoChangedDate=? WHERE userUuid=?";
constexpr char kDeleteUser[] = "DELETE FROM Users WHERE userUuid=?";
constexpr char kDeleteAllUsers[] = "DELETE FROM Users";

constexpr char kSelectFriendByOwner[] = "SELECT * FROM Friends WHERE friendId=? AND userUuid=?";
constexpr char kSelectFriend[] = "SELECT * FROM Friends WHERE friendUuid=?";
constexpr char kSelectFriendUuid[] =
    "SELECT friendUuid FROM Friends WHERE userUuid=? AND friendId=? AND friendQorDevicePeerId=?";
constexpr char kSelectFriendUuids[] = "SELECT friendUuid FROM Friends WHERE userUuid=?";
constexpr char kInsertFriend[] =
    "INSERT INTO Friends ( friendUuid , userUuid , friendId , friendName , friendGuid , "
    "friendQorDeviceName , friendQorDevicePhysicalAddressText, friendQorDevicePeerId ) VALUES (?, "
    "?, ?, ?, ?, ?, ?, ?)";
constexpr char kDeleteFriend[] = "DELETE FROM Friends WHERE friendUuid=?";
constexpr char kDeleteAllFriends[] = "DELETE FROM Friends";
constexpr char kVacuum[] = "VACUUM";

constexpr int kExecutableDirectory = 2;  // PathService's key.

// SQLite's busy handler, called on the thread of the operation while another connection holds the
// file. Eleven pauses of half a second; the last one, before giving up, is deliberate. No exception
// may pass through SQLite's C code.
int PauseWhileBusy(void* /*store*/, int earlier_calls) {
  try {
    base::PlatformThread::Sleep(base::TimeDelta::FromMilliseconds(500));
  } catch (...) {
    return 0;
  }
  return earlier_calls == 10 ? 0 : 1;
}

FilePath DatabasePath(const std::string& storage_path, const std::string& file_name) {
  if (!storage_path.empty()) {
    // Deliberately without a separator: the configured storage path ends with its own "/".
    return FilePath::FromUTF8Unsafe(storage_path + file_name);
  }
  FilePath directory;
  PathService::Get(kExecutableDirectory, &directory);
  return directory.Append(file_name);
}

void ReadUser(sql::Statement& row, UserInfo& user) {
  std::string* const fields[] = {
      &user.userUuid,       &user.userId,         &user.userName,
      &user.userGuid,       &user.accessToken,    &user.refreshToken,
      &user.registeredDate, &user.lastSignInDate, &user.lastInfoChangedDate};
  int column = 0;
  for (std::string* field : fields) *field = row.ColumnString(column++);
}

void ReadFriend(sql::Statement& row, FriendInfo& friend_info) {
  friend_info.friendUuid = row.ColumnString(0);
  // Column 1 is the owner, which is not part of the record.
  friend_info.friendId = row.ColumnString(2);
  friend_info.friendName = row.ColumnString(3);
  friend_info.friendGuid = row.ColumnString(4);
  friend_info.friendQorDeviceName = row.ColumnString(5);
  friend_info.friendQorDevicePhysicalAddressText = row.ColumnString(6);
  friend_info.friendQorDevicePeerId = row.ColumnString(7);
}

}  // namespace

AccountDBWrapper::AccountDBWrapper() = default;

AccountDBWrapper::~AccountDBWrapper() {
  base::AutoLock hold(lock_);
  initialised_ = false;
  connection_.reset();
}

bool AccountDBWrapper::Init() {
  {
    base::AutoLock hold(lock_);
    if (initialised_) return true;
    connection_ = std::make_unique<sql::Connection>();
  }
  // Without the lock: reading the configuration calls the runtime, and logging calls a handler.
  std::string storage_path;
  std::string file_name;
  ReadConfigOption("qorn_storage_path", &storage_path);
  ReadConfigOption("account_db_path", &file_name);
  if (file_name.empty()) {
    LogFailure(FROM_HERE, "Init",
               "Account Component Initialization failed as there is no db file name in config.xml");
    return false;
  }
  {
    base::AutoLock hold(lock_);
    path_ = DatabasePath(storage_path, file_name);
  }
  if (!CheckAndCreateTable()) return false;
  base::AutoLock hold(lock_);
  initialised_ = true;
  return true;
}

bool AccountDBWrapper::CheckAndCreateTable() {
  base::AutoLock hold(lock_);
  if (initialised_) return true;
  if (path_.empty()) {
    LogFailure(FROM_HERE, "CheckAndCreateTable", "DB Filename is not set");
    return false;
  }
  if (!connection_->Open(path_)) {
    LogFailure(FROM_HERE, "CheckAndCreateTable", "Fail to sqlite3_open");
    return false;
  }
  connection_->SetBusyHandler(&PauseWhileBusy, this);
  // Both are tried, so that the log shows everything that is wrong at once.
  const bool users = CreateTable("Users", kCreateUsers, "Fail to sqlite3_exec Users");
  const bool friends = CreateTable("Friends", kCreateFriends, "Fail to sqlite3_exec Friends");
  return users && friends;
}

bool AccountDBWrapper::CreateTable(const char* name, const char* sql, const char* failure) {
  if (connection_->DoesTableExist(name) || connection_->Execute(sql)) return true;
  LogFailure(FROM_HERE, "CheckAndCreateTable", failure);
  return false;
}

AccountResult AccountDBWrapper::Prepare(const char* function, const char* sql, Values values,
                                        sql::Statement* statement) {
  if (!initialised_) return kAccountDbConnectFailure;
  *statement = connection_->GetUniqueStatement(sql);
  if (!statement->is_valid()) {
    Log(FROM_HERE, kSeverityFailure, function,
        {"Fail to sqlite3_exec(), ", connection_->GetErrorMessage()});
    return kAccountDbExecuteFailure;
  }
  int column = 0;
  for (const std::string* value : values) {
    // SQLite would store a value that is too long as NULL, and NULL matches nothing.
    if (!statement->BindString(column++, *value)) throw std::length_error(function);
  }
  return kAccountSuccess;
}

AccountResult AccountDBWrapper::Write(const char* function, const char* sql, Values values) {
  sql::Statement statement;
  const AccountResult prepared = Prepare(function, sql, values, &statement);
  if (prepared != kAccountSuccess) return prepared;
  statement.Run();  // Deliberately unchecked: a prepared write counts as done.
  statement.Reset(true);
  return kAccountSuccess;
}

AccountResult AccountDBWrapper::RefuseRows(const char* function, const char* sql, Values values,
                                           AccountResult duplicate) {
  sql::Statement statement;
  AccountResult result = Prepare(function, sql, values, &statement);
  if (result != kAccountSuccess) return result;
  while (statement.Step()) result = duplicate;
  return result;
}

template <typename Take>
AccountResult AccountDBWrapper::ReadRows(const char* function, const char* sql, Values values,
                                         AccountResult not_found, Take take) {
  base::AutoLock hold(lock_);
  sql::Statement statement;
  AccountResult result = Prepare(function, sql, values, &statement);
  if (result != kAccountSuccess) return result;
  result = not_found;
  while (statement.Step()) {
    take(statement);
    result = kAccountSuccess;
  }
  statement.Clear();
  return result;
}

AccountResult AccountDBWrapper::AddUser(const UserInfo& user) {
  base::AutoLock hold(lock_);
  AccountResult result =
      RefuseRows("AddUser", kSelectUserById, {&user.userId}, kAccountDuplicatedUserId);
  if (result != kAccountSuccess) return result;
  result = RefuseRows("AddUser", kSelectUserByGuid, {&user.userGuid}, kAccountDuplicatedUserGuid);
  if (result != kAccountSuccess) return result;
  return Write(
      "AddUser", kInsertUser,
      {&user.userUuid, &user.userId, &user.userName, &user.userGuid, &user.accessToken,
       &user.refreshToken, &user.registeredDate, &user.lastSignInDate, &user.lastInfoChangedDate});
}

AccountResult AccountDBWrapper::RemoveUser(const std::string& user_uuid) {
  base::AutoLock hold(lock_);
  return Write("RemoveUser", kDeleteUser, {&user_uuid});
}

AccountResult AccountDBWrapper::ModifyUser(const UserInfo& user) {
  base::AutoLock hold(lock_);
  return Write(
      "ModifyUser", kUpdateUser,
      {&user.userId, &user.userName, &user.userGuid, &user.accessToken, &user.refreshToken,
       &user.registeredDate, &user.lastSignInDate, &user.lastInfoChangedDate, &user.userUuid});
}

AccountResult AccountDBWrapper::AddFriend(const std::string& user_uuid,
                                          const FriendInfo& friend_info) {
  base::AutoLock hold(lock_);
  const AccountResult result =
      RefuseRows("AddFriend", kSelectFriendByOwner, {&friend_info.friendId, &user_uuid},
                 kAccountDuplicatedFriendId);
  if (result != kAccountSuccess) return result;
  return Write(
      "AddFriend", kInsertFriend,
      {&friend_info.friendUuid, &user_uuid, &friend_info.friendId, &friend_info.friendName,
       &friend_info.friendGuid, &friend_info.friendQorDeviceName,
       &friend_info.friendQorDevicePhysicalAddressText, &friend_info.friendQorDevicePeerId});
}

AccountResult AccountDBWrapper::RemoveFriend(const std::string& friend_uuid) {
  base::AutoLock hold(lock_);
  return Write("RemoveFriend", kDeleteFriend, {&friend_uuid});
}

AccountResult AccountDBWrapper::DeleteAll() {
  base::AutoLock hold(lock_);
  for (const char* sql : {kDeleteAllUsers, kDeleteAllFriends, kVacuum}) {
    const AccountResult result = Write("DeleteAll", sql, {});
    if (result != kAccountSuccess) return result;
  }
  return kAccountSuccess;
}

AccountResult AccountDBWrapper::GetUserByUserUuid(const std::string& user_uuid, UserInfo& user) {
  if (user_uuid == kSystemAccountId) return GetSystemAccount(user);
  return ReadRows("GetUserByUserUuid", kSelectUserByUuid, {&user_uuid}, kAccountNoUserWithUserUuid,
                  [&](sql::Statement& row) { ReadUser(row, user); });
}

AccountResult AccountDBWrapper::GetUserByUserId(const std::string& user_id, UserInfo& user) {
  if (user_id == kSystemAccountId) return GetSystemAccount(user);
  return ReadRows("GetUserByUserId", kSelectUserById, {&user_id}, kAccountNoUserWithUserId,
                  [&](sql::Statement& row) { ReadUser(row, user); });
}

AccountResult AccountDBWrapper::GetFriend(const std::string& friend_uuid, FriendInfo& friend_info) {
  return ReadRows("GetFriend", kSelectFriend, {&friend_uuid}, kAccountNoFriendWithFriendUuid,
                  [&](sql::Statement& row) { ReadFriend(row, friend_info); });
}

AccountResult AccountDBWrapper::GetUserUUIDFromUserID(const std::string& user_id,
                                                      std::string& user_uuid) {
  if (user_id == kSystemAccountId) {
    user_uuid = kSystemAccountId;
    return kAccountSuccess;
  }
  return ReadRows("GetUserUUIDFromUserID", kSelectUuidById, {&user_id}, kAccountNoUserWithUserId,
                  [&](sql::Statement& row) { user_uuid = row.ColumnString(0); });
}

AccountResult AccountDBWrapper::GetFriendUUIDFromFriendIDAndFriendPeerID(
    const std::string& user_uuid, const std::string& friend_id, const std::string& friend_peer_id,
    std::string& friend_uuid) {
  return ReadRows("GetFriendUUIDFromFriendIDAndFriendPeerID", kSelectFriendUuid,
                  {&user_uuid, &friend_id, &friend_peer_id}, kAccountNoFriendWithFriendId,
                  [&](sql::Statement& row) { friend_uuid = row.ColumnString(0); });
}

AccountResult AccountDBWrapper::GetAllUsersUuidList(std::vector<std::string>& user_uuids) {
  const AccountResult result =
      ReadRows("GetAllUsersUuidList", kSelectAllUserUuids, {}, kAccountSuccess,
               [&](sql::Statement& row) { user_uuids.push_back(row.ColumnString(0)); });
  if (result == kAccountSuccess) user_uuids.push_back(kSystemAccountId);
  return result;
}

AccountResult AccountDBWrapper::GetAllFriendsUuidList(const std::string& user_uuid,
                                                      std::vector<std::string>& friend_uuids) {
  return ReadRows("GetAllFriendsUuidList", kSelectFriendUuids, {&user_uuid}, kAccountSuccess,
                  [&](sql::Statement& row) { friend_uuids.push_back(row.ColumnString(0)); });
}

AccountResult AccountDBWrapper::GetSystemAccount(UserInfo& user) {
  // No tokens and no dates: nobody signs it in at the cloud.
  user = {};
  user.userUuid = kSystemAccountId;
  user.userId = kSystemAccountId;
  user.userName = kSystemAccountId;
  user.userGuid = kSystemAccountId;
  return kAccountSuccess;
}

}  // namespace account
