#ifndef QORN_PLATFORM_SQL_STATEMENT_H_
#define QORN_PLATFORM_SQL_STATEMENT_H_

#include <memory>
#include <string>

struct sqlite3_stmt;

namespace sql {

// One prepared statement, made by Connection::GetUniqueStatement. On an invalid one every call
// returns false or "". Not thread-safe; the rules of its connection apply.
class Statement {
 public:
  // Invalid.
  Statement();
  ~Statement();
  Statement(Statement&& other) noexcept;
  Statement& operator=(Statement&& other) noexcept;

  bool is_valid() const { return statement_ != nullptr; }

  // Binds all bytes of `value`, including zero bytes, to a parameter; the first is 0. Throws
  // std::bad_alloc, because an unbound value would be written as NULL.
  bool BindString(int column, const std::string& value);

  // Advances to the next row; true only if there is one.
  bool Step();
  // Runs to the end; true only if it succeeds without returning a row.
  bool Run();
  // Whether the last Step or Run had no error; false before the first.
  bool Succeeded() const { return succeeded_; }

  // The current row's column as text; the first is 0. "" for NULL. Throws std::bad_alloc.
  std::string ColumnString(int column) const;

  // Prepares the statement to run again, with its parameters or with all of them NULL.
  void Reset(bool clear_bindings);
  // Releases the statement, which is invalid afterwards.
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
