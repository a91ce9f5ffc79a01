#ifndef QORN_GATEWAY_HOST_DATABASE_READER_H_
#define QORN_GATEWAY_HOST_DATABASE_READER_H_

#include <sqlite3.h>

#include <functional>
#include <memory>
#include <string>

namespace gateway {

// A connection that cannot write. All its reads are in one transaction, so that they agree with
// each other. Not thread-safe.
class DatabaseReader {
 public:
  // Of a file. `immutable` makes SQLite read this file alone: without a lock, ignoring a journal or
  // -wal file.
  DatabaseReader(const std::string& path, bool immutable, int busy_milliseconds);
  // Of a database file's bytes, which it borrows.
  explicit DatabaseReader(const std::string& image);

  // Calls `take` with each row; SQLITE_OK when all were there.
  int Read(const char* sql, const std::function<void(sqlite3_stmt*)>& take);
  size_t Count(const char* sql);

  std::string Error() const { return sqlite3_errmsg(db_.get()); }
  sqlite3* handle() const { return db_.get(); }

 private:
  void Begin(sqlite3* opened, int busy_milliseconds);

  std::unique_ptr<sqlite3, int (*)(sqlite3*)> db_{nullptr, &sqlite3_close};
};

// "" for NULL.
std::string ColumnText(sqlite3_stmt* row, int column);

// Whether the file is in SQLite's write-ahead mode. The gateway never makes such a database, and
// opening one creates -wal and -shm files.
bool IsWriteAhead(const std::string& path);

}  // namespace gateway

#endif  // QORN_GATEWAY_HOST_DATABASE_READER_H_
