// Users and friends in a database, as many as wanted.
#ifndef QORN_BENCH_STORED_USERS_H_
#define QORN_BENCH_STORED_USERS_H_

#include <string>

#include "bench/raw_database.h"
#include "core_fw/account/src/account_records.h"

namespace bench {

// Puts users with so many friends each into a database with empty tables.
void Fill(RawDatabase& database, long users, long friends_of_each);

// The records that Fill makes, by their numbers, which begin with 0.
account::UserInfo UserNumber(long number);
account::FriendInfo FriendNumber(long user, long number);

// Reads a whole row into the record, as the floor does it.
void TakeUser(sqlite3_stmt* row, account::UserInfo* user);
void TakeFriend(sqlite3_stmt* row, account::FriendInfo* friend_info);

// Inserts or overwrites a user with one statement.
void InsertUser(RawDatabase& database, const account::UserInfo& user);
void UpdateUser(RawDatabase& database, const account::UserInfo& user);
void InsertFriend(RawDatabase& database, const std::string& owner,
                  const account::FriendInfo& friend_info);

}  // namespace bench

#endif  // QORN_BENCH_STORED_USERS_H_
