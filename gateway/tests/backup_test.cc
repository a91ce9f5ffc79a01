#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "gateway/maintenance/restore.h"

namespace {

// Calls that are good before one fails, or kills the process; below 0: none does.
int good_calls = -1;
bool kills = false;

template <typename... Arguments>
long Call(long number, Arguments... arguments) {
  if (good_calls >= 0 && good_calls-- == 0) {
    if (kills) _exit(9);
    errno = EIO;
    return -1;
  }
  return syscall(number, arguments...);
}

}  // namespace

// In the place of the C library's: all that change files in a restore.
extern "C" {
ssize_t write(int fd, const void* bytes, size_t size) {
  if (good_calls == 0 && kills) size /= 2, ++good_calls;
  const ssize_t written = Call(SYS_write, fd, bytes, size);
  if (kills && good_calls == 0) _exit(9);
  return written;
}
int fsync(int fd) { return static_cast<int>(Call(SYS_fsync, fd)); }
int unlink(const char* path) noexcept {
  return static_cast<int>(Call(SYS_unlinkat, AT_FDCWD, path, 0));
}
int link(const char* from, const char* to) noexcept {
  return static_cast<int>(Call(SYS_linkat, AT_FDCWD, from, AT_FDCWD, to, 0));
}
int renameat2(int from_folder, const char* from, int to_folder, const char* to,
              unsigned flags) noexcept {
  return static_cast<int>(Call(SYS_renameat2, from_folder, from, to_folder, to, flags));
}
}

namespace gateway {
namespace {

constexpr char kTables[] =
    "PRAGMA page_size=512;"
    "CREATE TABLE Users(userUuid PRIMARY KEY, userId, userName, userGuid, accessToken, "
    "refreshToken, registeredDate, lastSignInDate, lastInfoChangedDate);"
    "CREATE TABLE Friends(friendUuid PRIMARY KEY, userUuid, friendId, friendName, friendGuid, "
    "friendQorDeviceName, friendQorDevicePhysicalAddressText, friendQorDevicePeerId);"
    "INSERT INTO Users(userUuid, userId, accessToken, refreshToken)"
    " VALUES('u', 'ann', 'access-1', 'refresh-1');"
    "INSERT INTO Users(userUuid, userId) VALUES('v', 'bob'); DELETE FROM Users WHERE userUuid='v';";

std::string Bytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class BackupTest : public testing::Test {
 protected:
  BackupTest() {
    char name[] = "/tmp/backup_test.XXXXXX";
    folder_ = mkdtemp(name);
    database_ = folder_ + "/account.db";
  }
  ~BackupTest() override { std::filesystem::remove_all(folder_); }

  // The archive of a database that the statements made.
  std::string Archive(const std::string& statements) {
    const std::string path = folder_ + "/source.db";
    std::filesystem::remove(path);
    sqlite3* db = nullptr;
    sqlite3_open(path.c_str(), &db);
    EXPECT_EQ(sqlite3_exec(db, statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(db);
    sqlite3_close(db);
    return MakeArchive({{.device_address = "AABBCC", .users = 1}, Bytes(path)});
  }

  void WriteOld() { std::ofstream(database_) << "the old one"; }

  // Why the archive is refused; "" if it is not.
  std::string Restore(const std::string& archive) {
    Copy copy;
    std::string error;
    return RestoreDatabase(archive, database_, &copy, &error) ? "" : error;
  }

  std::string folder_;
  std::string database_;
};

TEST_F(BackupTest, NoBitAndNoByteOfAnArchiveCanChange) {
  const std::string good = Archive(kTables);
  WriteOld();
  std::string archive = good;
  for (char& byte : archive) {
    for (int bit = 0; bit < 8; ++bit) {
      byte = static_cast<char>(byte ^ 1 << bit);
      ASSERT_NE(Restore(archive), "") << "bit " << bit << " of byte " << &byte - archive.data();
      byte = static_cast<char>(byte ^ 1 << bit);
    }
  }
  for (size_t size = 0; size < good.size(); ++size) {
    ASSERT_NE(Restore(good.substr(0, size)), "") << size;
  }
  EXPECT_NE(Restore(good + '\0'), "");
  EXPECT_EQ(Bytes(database_), "the old one");
  RecordProperty("bits", static_cast<int>(8 * good.size()));
  EXPECT_EQ(Restore(good), "");
}

TEST_F(BackupTest, EachRefusalSaysWhy) {
  std::string newer = Archive(kTables);
  newer[newer.find("\"version\": 1") + 11] = '2';
  std::string write_ahead = Archive(kTables);
  Copy copy;
  std::string error;
  ASSERT_TRUE(ReadArchive(write_ahead, &copy, &error));
  copy.database[18] = 2;
  Copy damaged = copy;
  damaged.database = damaged.database.substr(0, damaged.database.size() - 512);
  const std::string tables = kTables;
  const std::pair<std::string, const char*> kCases[] = {
      {"", "is cut off"},
      {std::string(1024, '\0'), "is not a copy"},
      {newer, "newer version (format 2; this program reads 1)"},
      {MakeArchive(copy), "write-ahead"},
      {MakeArchive(damaged), "database.integrity"},
      {Archive(tables + "CREATE TABLE Other(a)"), "database.foreign table Other"},
      {Archive(tables + "CREATE VIEW Look AS SELECT 1"), "database.foreign view Look"},
      {Archive(tables + "CREATE INDEX Fast ON Users(userId)"), "database.foreign index Fast"},
      {Archive(tables + "CREATE TRIGGER Act AFTER INSERT ON Users BEGIN SELECT 1; END"),
       "database.foreign trigger Act"},
      {Archive(tables + "ALTER TABLE Users DROP COLUMN refreshToken"), "database.table.users"},
      {Archive(tables + "ALTER TABLE Friends ADD COLUMN more"), "database.table.friends"},
      {Archive(tables + "DROP TABLE Friends"), "database.table.friends"},
      {Archive(tables + "DELETE FROM Users"), "does not hold what its manifest says"},
  };
  WriteOld();
  for (const auto& [archive, reason] : kCases) {
    EXPECT_THAT(Restore(archive), testing::HasSubstr(reason));
  }
  std::ofstream(database_ + "-journal") << "a write";
  EXPECT_THAT(Restore(Archive(kTables)), testing::HasSubstr("account.db-journal is there"));
  std::filesystem::remove(database_ + "-journal");
  EXPECT_EQ(Bytes(database_), "the old one");
}

// Whether the restore got to its end in a process that dies before the call, or in the middle of
// it if it writes.
bool SurvivesInAChild(const std::string& archive, const std::string& database, int calls) {
  const pid_t child = fork();
  if (child == 0) {
    kills = true;
    good_calls = calls;
    Copy copy;
    std::string error;
    _exit(RestoreDatabase(archive, database, &copy, &error) ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_THAT(WEXITSTATUS(status), testing::AnyOf(0, 9));
  return WEXITSTATUS(status) == 0;
}

TEST_F(BackupTest, ACrashOrAFailedCallLeavesOneDatabaseOrTheOther) {
  const std::string archive = Archive(kTables);
  const std::string fresh = Bytes(folder_ + "/source.db");
  for (const bool crash : {true, false}) {
    bool done = false;
    int calls = 0;
    for (; !done; ++calls) {
      WriteOld();
      if (crash) {
        done = SurvivesInAChild(archive, database_, calls);
      } else {
        good_calls = calls;
        Restore(archive);
        done = good_calls >= 0;
        good_calls = -1;
        EXPECT_FALSE(std::filesystem::exists(database_ + ".new"));
      }
      EXPECT_THAT(Bytes(database_), testing::AnyOf("the old one", fresh)) << calls;
      if (Bytes(database_) == fresh) {
        EXPECT_EQ(Bytes(database_ + ".before-restore"), "the old one") << calls;
      }
      // What a crash left is in nobody's way.
      EXPECT_EQ(Restore(archive), "");
      EXPECT_EQ(Bytes(database_), fresh);
    }
    EXPECT_GT(calls, 7);
    RecordProperty(crash ? "crashes" : "failures", calls - 1);
  }
}

}  // namespace
}  // namespace gateway
