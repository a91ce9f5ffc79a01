// The database library: connections and statements over SQLite. It owns SQLite's handles and turns
// its errors into return values, so that nobody else includes sqlite3.h.
#ifndef QORN_PLATFORM_SQL_CONNECTION_H_
#define QORN_PLATFORM_SQL_CONNECTION_H_

#include <memory>
#include <string>

#include "base/file_path.h"
#include "sql/statement.h"

struct sqlite3;

namespace sql {

// One connection to a database file. No failure throws or ends the process. Not thread-safe: use it
// from one thread at a time.
class Connection {
 public:
  Connection();
  // Closes.
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // Opens or creates the file, without changing any setting of SQLite. False if SQLite fails or the
  // connection is already open.
  bool Open(const FilePath& path);
  // Remaining statements keep the file open until the last of them is destroyed.
  void Close();
  bool is_open() const { return db_ != nullptr; }

  // Runs one or more statements; false at the first that fails.
  bool Execute(const char* sql);
  // False also if the file is locked, cannot be read or is not a database.
  bool DoesTableExist(const char* table_name);

  // Prepares a new statement at every call. If it cannot be prepared, it is not valid and
  // GetErrorMessage says why.
  Statement GetUniqueStatement(const char* sql);

  // SQLite's text for the last failure; "sql::Connection has no connection." if closed.
  std::string GetErrorMessage() const;

  // While another connection holds a lock, `handler` is called on the thread that uses this
  // connection, with `context` and the number of earlier calls for the same lock. Non-zero retries.
  // Both pointers are borrowed until Close. Does nothing if closed.
  void SetBusyHandler(int (*handler)(void* context, int count), void* context);

 private:
  struct Closer {
    void operator()(sqlite3* db) const;
  };

  std::unique_ptr<sqlite3, Closer> db_;
};

}  // namespace sql

#endif  // QORN_PLATFORM_SQL_CONNECTION_H_
