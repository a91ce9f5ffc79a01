#include "sql/statement.h"

#include <sqlite3.h>

#include <new>

namespace sql {

Statement::Statement() = default;

Statement::Statement(sqlite3_stmt* statement) : statement_(statement) {}

Statement::~Statement() = default;

Statement::Statement(Statement&& other) noexcept = default;

Statement& Statement::operator=(Statement&& other) noexcept = default;

bool Statement::BindString(int column, const std::string& value) {
  if (!is_valid()) return false;
  // SQLite counts parameters from 1. SQLITE_TRANSIENT makes it copy the bytes, because the caller's
  // string may be gone when the statement runs.
  const int result = sqlite3_bind_text64(statement_.get(), column + 1, value.data(), value.size(),
                                         SQLITE_TRANSIENT, SQLITE_UTF8);
  if (result == SQLITE_NOMEM) throw std::bad_alloc();
  return result == SQLITE_OK;
}

bool Statement::Step() { return StepOnce() == SQLITE_ROW; }

// A statement that returns a row did not do what its caller expects of one without results.
bool Statement::Run() { return StepOnce() == SQLITE_DONE; }

std::string Statement::ColumnString(int column) const {
  if (!is_valid()) return "";
  const unsigned char* text = sqlite3_column_text(statement_.get(), column);
  if (text == nullptr) {
    // A value that is not NULL but has no text: SQLite could not allocate it.
    if (sqlite3_column_type(statement_.get(), column) != SQLITE_NULL) throw std::bad_alloc();
    return "";
  }
  const int size = sqlite3_column_bytes(statement_.get(), column);
  return std::string(reinterpret_cast<const char*>(text), static_cast<size_t>(size));
}

void Statement::Reset(bool clear_bindings) {
  if (!is_valid()) return;
  sqlite3_reset(statement_.get());
  if (clear_bindings) sqlite3_clear_bindings(statement_.get());
  succeeded_ = false;
}

void Statement::Clear() {
  statement_.reset();
  succeeded_ = false;
}

int Statement::StepOnce() {
  if (!is_valid()) return SQLITE_MISUSE;
  const int result = sqlite3_step(statement_.get());
  succeeded_ = result == SQLITE_ROW || result == SQLITE_DONE;
  return result;
}

void Statement::Finalizer::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

}  // namespace sql
