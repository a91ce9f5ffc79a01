#include "sql/connection.h"

#include <sqlite3.h>

namespace sql {

Connection::Connection() = default;

Connection::~Connection() = default;

bool Connection::Open(const FilePath& path) {
  if (is_open()) return false;
  sqlite3* db = nullptr;
  const int result = sqlite3_open(path.value().c_str(), &db);
  // A connection that could not be opened still needs to be closed.
  std::unique_ptr<sqlite3, Closer> opened(db);
  if (result != SQLITE_OK) return false;
  db_ = std::move(opened);
  return true;
}

void Connection::Close() { db_.reset(); }

bool Connection::Execute(const char* sql) {
  return is_open() && sqlite3_exec(db_.get(), sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

bool Connection::DoesTableExist(const char* table_name) {
  Statement statement =
      GetUniqueStatement("SELECT name FROM sqlite_master WHERE type='table' AND name=?");
  return statement.BindString(0, table_name) && statement.Step();
}

Statement Connection::GetUniqueStatement(const char* sql) {
  sqlite3_stmt* statement = nullptr;
  if (is_open()) sqlite3_prepare_v2(db_.get(), sql, -1, &statement, nullptr);
  return Statement(statement);
}

std::string Connection::GetErrorMessage() const {
  return is_open() ? sqlite3_errmsg(db_.get()) : "sql::Connection has no connection.";
}

void Connection::SetBusyHandler(int (*handler)(void* context, int count), void* context) {
  if (is_open()) sqlite3_busy_handler(db_.get(), handler, context);
}

// The _v2 function allows statements to outlive the connection; the other one would leak both.
void Connection::Closer::operator()(sqlite3* db) const { sqlite3_close_v2(db); }

}  // namespace sql
