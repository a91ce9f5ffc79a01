#include "gateway/host/database_examination.h"

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>

#include "gateway/host/database_files.h"

namespace gateway {
namespace {

constexpr int kBusyMilliseconds = 2000;
// A database of up to this size is read whole in a few milliseconds.
constexpr std::uintmax_t kSmallDatabase = std::uintmax_t{1} << 20;

struct TableRule {
  const char* name;
  const char* finding;
  // In the order in which the gateway reads a row.
  std::vector<std::string> columns;
};

std::vector<TableRule> TableRules() {
  return {{"Users",
           "database.table.users",
           {"userUuid", "userId", "userName", "userGuid", "accessToken", "refreshToken",
            "registeredDate", "lastSignInDate", "lastInfoChangedDate"}},
          {"Friends",
           "database.table.friends",
           {"friendUuid", "userUuid", "friendId", "friendName", "friendGuid", "friendQorDeviceName",
            "friendQorDevicePhysicalAddressText", "friendQorDevicePeerId"}}};
}

std::string Text(sqlite3_stmt* row, int column) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
  return text == nullptr ? "" : text;
}

// A connection that cannot write.
class Reader {
 public:
  // `immutable` makes SQLite read this file alone: without a lock, ignoring a journal or -wal file.
  Reader(const std::string& path, bool immutable, int busy_milliseconds) {
    std::string uri = path.starts_with("/") ? "file://" : "file:";
    for (const char c : path) {
      const bool reserved = c == '%' || c == '?' || c == '#';
      uri += !reserved ? std::string(1, c) : c == '%' ? "%25" : c == '?' ? "%3f" : "%23";
    }
    uri += immutable ? "?mode=ro&immutable=1" : "?mode=ro";
    sqlite3* db = nullptr;
    sqlite3_open_v2(uri.c_str(), &db, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr);
    db_.reset(db);
    sqlite3_extended_result_codes(db, 1);
    sqlite3_busy_timeout(db, busy_milliseconds);
    // One transaction for all reads, so that they agree with each other.
    Read("BEGIN", [](sqlite3_stmt*) {});
  }

  // Calls `take` with each row; SQLITE_OK when all were there.
  int Read(const char* sql, const std::function<void(sqlite3_stmt*)>& take) {
    sqlite3_stmt* prepared = nullptr;
    int code = sqlite3_prepare_v2(db_.get(), sql, -1, &prepared, nullptr);
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(prepared,
                                                                          &sqlite3_finalize);
    if (code != SQLITE_OK) return code;
    while ((code = sqlite3_step(prepared)) == SQLITE_ROW) take(prepared);
    return code == SQLITE_DONE ? SQLITE_OK : code;
  }

  size_t Count(const char* sql) {
    size_t count = 0;
    Read(sql,
         [&](sqlite3_stmt* row) { count = static_cast<size_t>(sqlite3_column_int64(row, 0)); });
    return count;
  }

  std::string Error() const { return sqlite3_errmsg(db_.get()); }

 private:
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> db_{nullptr, &sqlite3_close};
};

// The gateway never makes such a database. SQLite would create -wal and -shm files when it opens
// one, and an examination must not write.
bool IsWriteAhead(const std::string& path) {
  char header[20] = "";
  std::ifstream(path, std::ios::binary).read(header, sizeof(header));
  return header[18] == 2 || header[19] == 2;
}

void MarkFailure(int code, const std::string& error, Finding* finding) {
  if (code == SQLITE_READONLY_ROLLBACK) {
    finding->MarkWarning(
        "a write was interrupted; start the gateway, which undoes it, and look again");
  } else if ((code & 0xff) == SQLITE_BUSY) {
    finding->MarkWarning("is in use just now: look again");
  } else {
    finding->MarkBad("cannot be read: " + error +
                     "; restore a backup, or move the file away and start afresh");
  }
}

// False when nothing can be read from it.
bool ExamineIntegrity(Reader* reader, Finding* finding) {
  std::string first_fault;
  const int code = reader->Read("PRAGMA integrity_check(1)", [&](sqlite3_stmt* row) {
    if (Text(row, 0) != "ok") first_fault = Text(row, 0);
  });
  if (code != SQLITE_OK) {
    MarkFailure(code, reader->Error(), finding);
    return false;
  }
  if (first_fault.empty()) return true;
  for (char& c : first_fault) c = c == '\n' ? ' ' : c;
  finding->MarkBad("is damaged (" + first_fault +
                   "): restore a backup, or move the file away and start afresh");
  return true;
}

void ExamineTable(Reader* reader, const TableRule& rule, Finding* finding) {
  std::vector<std::string> columns;
  reader->Read(("SELECT name FROM pragma_table_info('" + std::string(rule.name) + "')").c_str(),
               [&](sqlite3_stmt* row) { columns.push_back(Text(row, 0)); });
  finding->value = std::to_string(columns.size()) + " columns";
  if (columns.empty()) {
    finding->value.reset();
    finding->MarkWarning("is not there: the gateway makes it at its next start");
    return;
  }
  for (size_t i = 0; i < rule.columns.size(); ++i) {
    if (i < columns.size() && columns[i] == rule.columns[i]) continue;
    finding->MarkBad("column " + std::to_string(i + 1) + " is not " + rule.columns[i] +
                     ": this is not the gateway's table; move the file away");
    return;
  }
  if (columns.size() > rule.columns.size()) {
    finding->MarkWarning("has columns that are not the gateway's");
  }
}

Finding ExamineForeign(Reader* reader) {
  Finding finding{"database.foreign", std::nullopt, "it holds nothing else"};
  std::string names;
  reader->Read(
      "SELECT type || ' ' || name FROM sqlite_master WHERE name NOT LIKE 'sqlite\\_%' ESCAPE '\\' "
      "AND NOT (type='table' AND name IN ('Users','Friends')) ORDER BY name",
      [&](sqlite3_stmt* row) { names += (names.empty() ? "" : ", ") + Text(row, 0); });
  if (names.empty()) return finding;
  finding.value = names;
  finding.MarkWarning("not the gateway's: find out which program put it there");
  return finding;
}

bool IsGiven(sqlite3_stmt* row, int column) { return !Text(row, column).empty(); }

void ReadContent(Reader* reader, Stored* stored) {
  const int code = reader->Read(
      "SELECT userUuid, userId, userGuid, accessToken, refreshToken FROM Users ORDER BY rowid",
      [&](sqlite3_stmt* row) {
        stored->users.push_back(
            {Text(row, 0), Text(row, 1), IsGiven(row, 2), IsGiven(row, 3), IsGiven(row, 4)});
      });
  stored->friends = reader->Count("SELECT count(*) FROM Friends");
  stored->friends_without_user = reader->Count(
      "SELECT count(*) FROM Friends WHERE userUuid IS NULL OR userUuid NOT IN "
      "(SELECT userUuid FROM Users WHERE userUuid IS NOT NULL UNION SELECT 'qornsystem')");
  // A table that is not there yet holds nothing.
  stored->read = code == SQLITE_OK || code == SQLITE_ERROR;
}

// Marks a database whose list of tables SQLite cannot read.
void ExamineSchema(Reader* reader, Finding* finding) {
  const int code = reader->Read("SELECT name FROM sqlite_master", [](sqlite3_stmt*) {});
  if (code != SQLITE_OK) MarkFailure(code, reader->Error(), finding);
}

}  // namespace

Findings ExamineDatabaseQuickly(const std::string& path) {
  Findings findings;
  if (!ExamineFiles(path, &findings)) return findings;
  Finding content{"database.integrity", path, "SQLite can read it"};
  Reader reader(path, IsWriteAhead(path), 0);
  std::error_code unknown;
  if (std::filesystem::file_size(path, unknown) <= kSmallDatabase) {
    ExamineIntegrity(&reader, &content);
  } else {
    ExamineSchema(&reader, &content);
  }
  findings.push_back(content);
  return findings;
}

Findings ExamineDatabase(const std::string& path, Stored* stored) {
  if (path.empty()) {
    return {
        {"database.file", std::nullopt, "there is none without account_db_path", Severity::kBad}};
  }
  Findings findings;
  if (!ExamineFiles(path, &findings)) {
    stored->read = !HasBad(findings);
    return findings;
  }
  const bool write_ahead = IsWriteAhead(path);
  Reader reader(path, write_ahead, kBusyMilliseconds);
  Finding integrity{"database.integrity", std::nullopt, "SQLite finds it sound"};
  const bool readable = ExamineIntegrity(&reader, &integrity);
  if (write_ahead) {
    integrity.MarkWarning(
        "another program switched it to write-ahead logging: what lies in the -wal "
        "file is not seen here");
  }
  findings.push_back(integrity);
  if (!readable) return findings;
  Findings tables;
  for (const TableRule& rule : TableRules()) {
    Finding table{rule.finding, std::nullopt, "is as the gateway makes it"};
    ExamineTable(&reader, rule, &table);
    tables.push_back(table);
  }
  findings.insert(findings.end(), tables.begin(), tables.end());
  findings.push_back(ExamineForeign(&reader));
  if (integrity.severity != Severity::kBad && !HasBad(tables)) ReadContent(&reader, stored);
  return findings;
}

}  // namespace gateway
