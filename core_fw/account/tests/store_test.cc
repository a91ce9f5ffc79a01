// What of the store no scenario reaches.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "core_fw/account/src/account_db_wrapper.h"
#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

class StoreTest : public AccountTest {
 protected:
  AccountDBWrapper store_;
};

TEST_F(StoreTest, AFailedInitMayBeTriedAgain) {
  EXPECT_FALSE(store_.CheckAndCreateTable());
  StartRuntime();
  // A folder where the file should be, then a file that is none of SQLite's.
  std::filesystem::create_directory(database_path());
  EXPECT_FALSE(store_.Init());
  std::filesystem::remove(database_path());
  WriteFile(database_path(), std::string(4096, 'x'));
  EXPECT_FALSE(store_.Init());
  EXPECT_THAT(log_.Take(),
              testing::ElementsAre(Line(4, "CheckAndCreateTable", "DB Filename is not set"),
                                   Line(4, "CheckAndCreateTable", "Fail to sqlite3_open"),
                                   Line(4, "CheckAndCreateTable", "Fail to sqlite3_exec Users"),
                                   Line(4, "CheckAndCreateTable", "Fail to sqlite3_exec Friends")));
  EXPECT_EQ(store_.AddUser({}), 3);
  std::filesystem::remove(database_path());
  EXPECT_TRUE(store_.Init());
  EXPECT_EQ(store_.AddUser({}), 1);
}

TEST_F(StoreTest, WithoutAStoragePathTheFileIsBesideTheProgram) {
  config_.erase("qorn_storage_path");
  const std::string name = "qorn-test-" + std::to_string(getpid()) + ".db";
  config_["account_db_path"] = name;
  StartRuntime();
  EXPECT_TRUE(store_.Init());
  const auto file = std::filesystem::read_symlink("/proc/self/exe").parent_path() / name;
  EXPECT_TRUE(std::filesystem::remove(file)) << file;
}

}  // namespace
}  // namespace account
