#ifndef QORN_PLATFORM_SQL_STATEMENT_H_
#define QORN_PLATFORM_SQL_STATEMENT_H_

#include <memory>
#include <string>

struct sqlite3_stmt;

namespace sql {

// One prepared statement, made by Connection::GetUniqueStatement. An invalid one answers false and
// "" to everything. Not thread-safe; used under the rules of its connection.
class Statement {
 public:
  // Invalid.
  Statement();
  ~Statement();
  Statement(Statement&& other) noexcept;
  Statement& operator=(Statement&& other) noexcept;

  bool is_valid() const { return statement_ != nullptr; }

  // Binds all bytes of `value`, zero bytes too, to a parameter; the first is 0. Throws
  // std::bad_alloc: a value that was not bound would be written as NULL.
  bool BindString(int column, const std::string& value);

  // Goes to the next row; true only if there is one.
  bool Step();
  // Runs to the end; true only if it gets there without a row.
  bool Run();
  // Whether the last Step or Run went without an error; false before the first.
  bool Succeeded() const { return succeeded_; }

  // The current row's column as text; the first is 0. "" for NULL. Throws std::bad_alloc.
  std::string ColumnString(int column) const;

  // Makes the statement ready to run again, with its parameters or with all of them NULL.
  void Reset(bool clear_bindings);
  // Gives the statement back; it is invalid from now on.
  void Clear();

 private:
  friend class Connection;

  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const;
  };

  explicit Statement(sqlite3_stmt* statement);
  int StepOnce();

  std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
  bool succeeded_ = false;
};

}  // namespace sql

#endif  // QORN_PLATFORM_SQL_STATEMENT_H_
