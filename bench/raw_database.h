// SQLite without a layer above it: the floor under the store.
#ifndef QORN_BENCH_RAW_DATABASE_H_
#define QORN_BENCH_RAW_DATABASE_H_

#include <sqlite3.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

#include "bench/home.h"

namespace bench {

// One connection with SQLite's own settings. Each call prepares its statement afresh.
class RawDatabase {
 public:
  using Values = std::initializer_list<std::string_view>;

  explicit RawDatabase(const std::string& path) {
    sqlite3* db = nullptr;
    Require(sqlite3_open(path.c_str(), &db) == SQLITE_OK, "cannot open a database");
    db_.reset(db);
  }

  // Runs a statement and hands each row to `take`; gives their number.
  template <typename Take>
  int Read(const char* sql, Values values, const Take& take) {
    sqlite3_stmt* statement = nullptr;
    Require(sqlite3_prepare_v2(db_.get(), sql, -1, &statement, nullptr) == SQLITE_OK, sql);
    int place = 0;
    for (std::string_view value : values) {
      sqlite3_bind_text64(statement, ++place, value.data(), value.size(), SQLITE_STATIC,
                          SQLITE_UTF8);
    }
    int rows = 0;
    for (; sqlite3_step(statement) == SQLITE_ROW; ++rows) take(statement);
    Require(sqlite3_finalize(statement) == SQLITE_OK, sql);
    return rows;
  }
  int Run(const char* sql, Values values = {}) {
    return Read(sql, values, [](sqlite3_stmt*) {});
  }

  // A column of the row into a string that keeps its memory.
  static void Take(sqlite3_stmt* row, int column, std::string* out) {
    const unsigned char* text = sqlite3_column_text(row, column);
    out->assign(reinterpret_cast<const char*>(text),
                static_cast<std::size_t>(sqlite3_column_bytes(row, column)));
  }

 private:
  struct Closer {
    void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
  };
  std::unique_ptr<sqlite3, Closer> db_;
};

// The store's statements, once more: what the floor runs must not come from what is measured.
inline constexpr char kCreateUsers[] =
    "CREATE TABLE Users (userUuid VARCHAR(256) PRIMARY KEY, userId VARCHAR(128), userName "
    "VARCHAR(64), userGuid VARCHAR(256), accessToken VARCHAR(256), refreshToken VARCHAR(256), "
    "registeredDate VARCHAR(64), lastSignInDate VARCHAR(64), lastInfoChangedDate VARCHAR(64));";
inline constexpr char kCreateFriends[] =
    "CREATE TABLE Friends (friendUuid VARCHAR(256) PRIMARY KEY, userUuid VARCHAR(256), friendId "
    "VARCHAR(128), friendName VARCHAR(64), friendGuid VARCHAR(128), friendQorDeviceName "
    "VARCHAR(64), friendQorDevicePhysicalAddressText VARCHAR(256), friendQorDevicePeerId "
    "VARCHAR(256));";
inline constexpr char kUserById[] = "SELECT * FROM Users WHERE userId=?";
inline constexpr char kUserByGuid[] = "SELECT * FROM Users WHERE userGuid=?";
inline constexpr char kUserByUuid[] = "SELECT * FROM Users WHERE userUuid=?";
inline constexpr char kUuidById[] = "SELECT userUuid FROM Users WHERE userId=?";
inline constexpr char kAllUsers[] = "SELECT userUuid FROM Users";
inline constexpr char kInsertUser[] =
    "INSERT INTO Users ( userUuid , userId , userName , userGuid , accessToken , refreshToken , "
    "registeredDate , lastSignInDate , lastInfoChangedDate ) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)";
inline constexpr char kUpdateUser[] =
    "UPDATE Users SET userId=?, userName=?, userGuid=?, accessToken=?, refreshToken=?, "
    "registeredDate=?, lastSignInDate=?, lastInfoChangedDate=? WHERE userUuid=?";
inline constexpr char kDeleteUser[] = "DELETE FROM Users WHERE userUuid=?";
inline constexpr char kFriendOfOwner[] = "SELECT * FROM Friends WHERE friendId=? AND userUuid=?";
inline constexpr char kFriendByUuid[] = "SELECT * FROM Friends WHERE friendUuid=?";
inline constexpr char kFriendByPeer[] =
    "SELECT friendUuid FROM Friends WHERE userUuid=? AND friendId=? AND friendQorDevicePeerId=?";
inline constexpr char kAllFriends[] = "SELECT friendUuid FROM Friends WHERE userUuid=?";
inline constexpr char kInsertFriend[] =
    "INSERT INTO Friends ( friendUuid , userUuid , friendId , friendName , friendGuid , "
    "friendQorDeviceName , friendQorDevicePhysicalAddressText, friendQorDevicePeerId ) VALUES (?, "
    "?, ?, ?, ?, ?, ?, ?)";
inline constexpr char kDeleteFriend[] = "DELETE FROM Friends WHERE friendUuid=?";

}  // namespace bench

#endif  // QORN_BENCH_RAW_DATABASE_H_
