#include "gateway/host/database_examination.h"

#include <cstdint>
#include <filesystem>

#include "gateway/host/database_files.h"
#include "gateway/host/database_reader.h"

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
bool ExamineIntegrity(DatabaseReader* reader, Finding* finding) {
  std::string first_fault;
  const int code = reader->Read("PRAGMA integrity_check(1)", [&](sqlite3_stmt* row) {
    if (ColumnText(row, 0) != "ok") first_fault = ColumnText(row, 0);
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

void ExamineTable(DatabaseReader* reader, const TableRule& rule, Finding* finding) {
  std::vector<std::string> columns;
  reader->Read(("SELECT name FROM pragma_table_info('" + std::string(rule.name) + "')").c_str(),
               [&](sqlite3_stmt* row) { columns.push_back(ColumnText(row, 0)); });
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

Finding ExamineForeign(DatabaseReader* reader) {
  Finding finding{"database.foreign", std::nullopt, "it holds nothing else"};
  std::string names;
  reader->Read(
      "SELECT type || ' ' || name FROM sqlite_master WHERE name NOT LIKE 'sqlite\\_%' ESCAPE '\\' "
      "AND NOT (type='table' AND name IN ('Users','Friends')) ORDER BY name",
      [&](sqlite3_stmt* row) { names += (names.empty() ? "" : ", ") + ColumnText(row, 0); });
  if (names.empty()) return finding;
  finding.value = names;
  finding.MarkWarning("not the gateway's: find out which program put it there");
  return finding;
}

bool IsGiven(sqlite3_stmt* row, int column) { return !ColumnText(row, column).empty(); }

// A change of ID or name leaves dates that are no number of seconds; those are not read.
int64_t ReadLatestStamp(DatabaseReader* reader) {
  int64_t latest = 0;
  reader->Read(
      "SELECT max(CAST(stamp AS INTEGER)) FROM (SELECT registeredDate AS stamp FROM Users "
      "UNION ALL SELECT lastSignInDate FROM Users UNION ALL SELECT lastInfoChangedDate FROM Users) "
      "WHERE length(stamp) BETWEEN 1 AND 11 AND stamp NOT GLOB '*[^0-9]*'",
      [&](sqlite3_stmt* row) { latest = sqlite3_column_int64(row, 0); });
  return latest;
}

void ReadContent(DatabaseReader* reader, Stored* stored) {
  const int code = reader->Read(
      "SELECT userUuid, userId, userGuid, accessToken, refreshToken FROM Users ORDER BY rowid",
      [&](sqlite3_stmt* row) {
        stored->users.push_back({ColumnText(row, 0), ColumnText(row, 1), IsGiven(row, 2),
                                 IsGiven(row, 3), IsGiven(row, 4)});
      });
  stored->latest_stamp = ReadLatestStamp(reader);
  stored->friends = reader->Count("SELECT count(*) FROM Friends");
  stored->friends_without_user = reader->Count(
      "SELECT count(*) FROM Friends WHERE userUuid IS NULL OR userUuid NOT IN "
      "(SELECT userUuid FROM Users WHERE userUuid IS NOT NULL UNION SELECT 'qornsystem')");
  // A table that is not there yet holds nothing.
  stored->read = code == SQLITE_OK || code == SQLITE_ERROR;
}

// Marks a database whose list of tables SQLite cannot read.
void ExamineSchema(DatabaseReader* reader, Finding* finding) {
  const int code = reader->Read("SELECT name FROM sqlite_master", [](sqlite3_stmt*) {});
  if (code != SQLITE_OK) MarkFailure(code, reader->Error(), finding);
}

// First its integrity, and nothing else if nothing can be read.
Findings ExamineContent(DatabaseReader* reader, Stored* stored) {
  Findings findings = {{"database.integrity", std::nullopt, "SQLite finds it sound"}};
  if (!ExamineIntegrity(reader, &findings.front())) return findings;
  for (const TableRule& rule : TableRules()) {
    Finding table{rule.finding, std::nullopt, "is as the gateway makes it"};
    ExamineTable(reader, rule, &table);
    findings.push_back(table);
  }
  const bool sound = !HasBad(findings);
  findings.push_back(ExamineForeign(reader));
  if (sound) ReadContent(reader, stored);
  return findings;
}

}  // namespace

Findings ExamineDatabaseQuickly(const std::string& path) {
  Findings findings;
  if (!ExamineFiles(path, &findings)) return findings;
  Finding content{"database.integrity", path, "SQLite can read it"};
  DatabaseReader reader(path, IsWriteAhead(path), 0);
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
  DatabaseReader reader(path, write_ahead, kBusyMilliseconds);
  Findings content = ExamineContent(&reader, stored);
  if (write_ahead) {
    content.front().MarkWarning(
        "another program switched it to write-ahead logging: what lies in the -wal "
        "file is not seen here");
  }
  findings.insert(findings.end(), content.begin(), content.end());
  return findings;
}

Findings ExamineDatabaseImage(const std::string& image, Stored* stored) {
  DatabaseReader reader(image);
  return ExamineContent(&reader, stored);
}

}  // namespace gateway
