#include "gateway/maintenance/database_copy.h"

#include <sqlite3.h>

#include <filesystem>
#include <memory>

#include "gateway/host/database_examination.h"
#include "gateway/host/database_reader.h"
#include "gateway/maintenance/files.h"

namespace gateway {
namespace {

using Connection = std::unique_ptr<sqlite3, int (*)(sqlite3*)>;

constexpr int kBusyMilliseconds = 5000;
// Vacuumed, so that no page keeps what was overwritten.
constexpr char kBlankTokens[] = "UPDATE Users SET accessToken='', refreshToken=''; VACUUM";

// All that examinations say must be good: warnings are no warnings to a program that writes.
bool IsTheGateways(const std::string& image, Stored* stored, std::string* error) {
  for (const Finding& finding : ExamineDatabaseImage(image, stored)) {
    if (finding.severity == Severity::kGood) continue;
    *error = finding.name + (finding.value ? " " + *finding.value : "") + ": " + finding.advice;
    return false;
  }
  return stored->read;
}

std::string Serialize(sqlite3* db) {
  sqlite3_int64 size = 0;
  const std::unique_ptr<unsigned char, void (*)(void*)> bytes(
      sqlite3_serialize(db, "main", &size, 0), &sqlite3_free);
  if (bytes == nullptr) return "";
  return std::string(reinterpret_cast<const char*>(bytes.get()), static_cast<size_t>(size));
}

// Into memory, so that no token that is to be blanked reaches another file.
bool CopyIntoMemory(const std::string& path, sqlite3* memory, std::string* error) {
  DatabaseReader source(path, false, kBusyMilliseconds);
  sqlite3_backup* const backup = sqlite3_backup_init(memory, "main", source.handle(), "main");
  if (backup != nullptr) {
    sqlite3_backup_step(backup, -1);
    sqlite3_backup_finish(backup);
  }
  // A source that cannot be opened is not told of by the copy.
  const int code = sqlite3_extended_errcode(backup != nullptr ? memory : source.handle());
  if (code == SQLITE_OK) return true;
  *error = path + ": cannot be copied: " +
           (code == SQLITE_READONLY_ROLLBACK
                ? "a write was interrupted; start the gateway, which undoes it"
                : sqlite3_errstr(code));
  return false;
}

// Any other version is for readers only, or is write-ahead mode.
bool HasRollbackJournal(const std::string& image) {
  return image.size() > 19 && image[18] == 1 && image[19] == 1;
}

bool IsCopyable(const std::string& path, std::string* error) {
  std::error_code failure;
  const std::uintmax_t size = std::filesystem::file_size(path, failure);
  if (failure) {
    *error = path + ": " + failure.message();
  } else if (size > kMaxArchiveBytes / 2) {
    *error = path + ": is too large to be copied";
  } else if (IsWriteAhead(path)) {
    *error = path + ": another program switched it to write-ahead logging; switch it back first";
  } else {
    return true;
  }
  return false;
}

}  // namespace

bool CopyDatabase(const std::string& path, bool with_tokens, Copy* copy, std::string* error) {
  if (!IsCopyable(path, error)) return false;
  sqlite3* opened = nullptr;
  sqlite3_open(":memory:", &opened);
  const Connection memory(opened, &sqlite3_close);
  if (!CopyIntoMemory(path, opened, error)) return false;
  Stored stored;
  std::string reason;
  if (!IsTheGateways(Serialize(opened), &stored, &reason)) {
    *error = path + ": could not be restored from a copy: " + reason;
    return false;
  }
  if (!with_tokens && sqlite3_exec(opened, kBlankTokens, nullptr, nullptr, nullptr) != SQLITE_OK) {
    *error = path + ": tokens cannot be blanked: " + sqlite3_errmsg(opened);
    return false;
  }
  copy->database = Serialize(opened);
  copy->manifest.users = stored.users.size();
  copy->manifest.friends = stored.friends;
  copy->manifest.tokens = with_tokens;
  return true;
}

bool CheckDatabase(const Copy& copy, std::string* error) {
  Stored stored;
  if (!IsTheGateways(copy.database, &stored, error)) return false;
  if (!HasRollbackJournal(copy.database)) {
    *error = "its database was switched to write-ahead logging";
    return false;
  }
  *error = "does not hold what its manifest says";
  return stored.users.size() == copy.manifest.users && stored.friends == copy.manifest.friends;
}

}  // namespace gateway
