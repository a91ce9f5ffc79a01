#include "gateway/host/database_reader.h"

#include <fstream>

namespace gateway {

DatabaseReader::DatabaseReader(const std::string& path, bool immutable, int busy_milliseconds) {
  std::string uri = path.starts_with("/") ? "file://" : "file:";
  for (const char c : path) {
    const bool reserved = c == '%' || c == '?' || c == '#';
    uri += !reserved ? std::string(1, c) : c == '%' ? "%25" : c == '?' ? "%3f" : "%23";
  }
  uri += immutable ? "?mode=ro&immutable=1" : "?mode=ro";
  sqlite3* db = nullptr;
  sqlite3_open_v2(uri.c_str(), &db, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr);
  Begin(db, busy_milliseconds);
}

DatabaseReader::DatabaseReader(const std::string& image) {
  sqlite3* db = nullptr;
  sqlite3_open_v2(":memory:", &db, SQLITE_OPEN_READWRITE, nullptr);
  // SQLite only reads the bytes: it may neither resize nor free them.
  auto* bytes = reinterpret_cast<unsigned char*>(const_cast<char*>(image.data()));
  const auto size = static_cast<sqlite3_int64>(image.size());
  sqlite3_deserialize(db, "main", bytes, size, size, SQLITE_DESERIALIZE_READONLY);
  Begin(db, 0);
}

void DatabaseReader::Begin(sqlite3* opened, int busy_milliseconds) {
  db_.reset(opened);
  sqlite3_extended_result_codes(opened, 1);
  sqlite3_busy_timeout(opened, busy_milliseconds);
  Read("BEGIN", [](sqlite3_stmt*) {});
}

int DatabaseReader::Read(const char* sql, const std::function<void(sqlite3_stmt*)>& take) {
  sqlite3_stmt* prepared = nullptr;
  int code = sqlite3_prepare_v2(db_.get(), sql, -1, &prepared, nullptr);
  const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement(prepared,
                                                                        &sqlite3_finalize);
  if (code != SQLITE_OK) return code;
  while ((code = sqlite3_step(prepared)) == SQLITE_ROW) take(prepared);
  return code == SQLITE_DONE ? SQLITE_OK : code;
}

size_t DatabaseReader::Count(const char* sql) {
  size_t count = 0;
  Read(sql, [&](sqlite3_stmt* row) { count = static_cast<size_t>(sqlite3_column_int64(row, 0)); });
  return count;
}

std::string ColumnText(sqlite3_stmt* row, int column) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
  return text == nullptr ? "" : text;
}

bool IsWriteAhead(const std::string& path) {
  char header[20] = "";
  std::ifstream(path, std::ios::binary).read(header, sizeof(header));
  return header[18] == 2 || header[19] == 2;
}

}  // namespace gateway
