#ifndef QORN_PLATFORM_SQL_CONNECTION_H_
#define QORN_PLATFORM_SQL_CONNECTION_H_

#include <memory>
#include <string>

#include "base/file_path.h"
#include "sql/statement.h"

struct sqlite3;

namespace sql {

// One connection to a database file. Failures are answers: nothing throws or ends the process. Not
// thread-safe: callers use it from one thread at a time.
class Connection {
 public:
  Connection();
  // Closes.
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // Opens or creates the file and changes no setting of the database engine. False when the engine
  // refuses and when the connection is open already.
  bool Open(const FilePath& path);
  // Statements that still live keep the file open until the last of them is gone.
  void Close();
  bool is_open() const { return db_ != nullptr; }

  // Runs one or more statements; false at the first that fails.
  bool Execute(const char* sql);
  // False also when the file is locked, cannot be read or is no database.
  bool DoesTableExist(const char* table_name);

  // Prepares a statement afresh at every call. One that cannot be prepared is not valid, and
  // GetErrorMessage says why.
  Statement GetUniqueStatement(const char* sql);

  // The engine's words on the last failure; "sql::Connection has no connection." when closed.
  std::string GetErrorMessage() const;

  // `handler` is called with `context`, on the thread that uses the connection, while another
  // connection holds a lock: with the number of calls before for this lock; non-zero tries again.
  // Both are borrowed until Close. Does nothing when closed.
  void SetBusyHandler(int (*handler)(void* context, int count), void* context);

 private:
  struct Closer {
    void operator()(sqlite3* db) const;
  };

  std::unique_ptr<sqlite3, Closer> db_;
};

}  // namespace sql

#endif  // QORN_PLATFORM_SQL_CONNECTION_H_
