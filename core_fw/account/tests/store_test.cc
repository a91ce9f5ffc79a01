// The store by itself; scenarios test it through the service.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <set>

#include "core_fw/account/src/account_db_wrapper.h"
#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

using testing::ElementsAre;

class StoreTest : public AccountTest {
 protected:
  AccountDBWrapper store_;
};

TEST_F(StoreTest, AWriteThatFindsNoRowIsASuccess) {
  StartRuntime();
  ASSERT_TRUE(store_.Init());
  EXPECT_EQ(store_.ModifyUser({}), 1);
  EXPECT_EQ(store_.RemoveUser("nobody"), 1);
  EXPECT_EQ(store_.RemoveFriend("nobody"), 1);
}

TEST_F(StoreTest, AFailedInitMayBeTriedAgain) {
  config_.erase("account_db_path");
  StartRuntime();
  EXPECT_FALSE(store_.Init());
  config_["account_db_path"] = "account.db";
  StartRuntime();
  // A folder where the file should be, then a file that is none of SQLite's.
  std::filesystem::create_directory(database_path());
  EXPECT_FALSE(store_.Init());
  std::filesystem::remove(database_path());
  std::ofstream(database_path()) << "longer than a header: " << std::string(4096, 'x');
  EXPECT_FALSE(store_.Init());
  EXPECT_THAT(
      log_.Take(),
      ElementsAre(
          Line(4, "Init",
               "Account Component Initialization failed as there is no db file name in config.xml"),
          Line(4, "CheckAndCreateTable", "Fail to sqlite3_open"),
          Line(4, "CheckAndCreateTable", "Fail to sqlite3_exec Users"),
          Line(4, "CheckAndCreateTable", "Fail to sqlite3_exec Friends")));
  EXPECT_EQ(store_.AddUser({}), 3);
  EXPECT_EQ(store_.RemoveFriend("f"), 3);
  std::filesystem::remove(database_path());
  EXPECT_TRUE(store_.Init());
  EXPECT_EQ(store_.AddUser({}), 1);
}

TEST_F(StoreTest, WithoutAPathItSaysSo) {
  EXPECT_FALSE(store_.CheckAndCreateTable());
  EXPECT_THAT(log_.Take(), ElementsAre(Line(4, "CheckAndCreateTable", "DB Filename is not set")));
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

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// A database of a dozen pages.
class DamagedStoreTest : public AccountTest {
 protected:
  DamagedStoreTest();
  // Opens the file. Without success that is logged, and everything is answered with 3.
  bool Open();
  // The users that can be looked up.
  std::set<std::string> Readable();

  std::unique_ptr<AccountDBWrapper> store_;
  UserInfo user_;
};

DamagedStoreTest::DamagedStoreTest() {
  config_["qorn_storage_path"] = folder_ + "/store/";
  std::filesystem::create_directory(folder_ + "/store");
  StartRuntime();
  EXPECT_TRUE(Open());
  for (int i = 0; i < 40; ++i) {
    const std::string n = std::to_string(i);
    store_->AddUser(
        {"uuid" + n, "id" + n, n, n, std::string(400, 'a'), std::string(400, 'r'), "", "", ""});
    store_->AddFriend("uuid" + n, {n, n, n, n, n, n, n});
  }
  store_.reset();
}

bool DamagedStoreTest::Open() {
  store_ = std::make_unique<AccountDBWrapper>();
  if (store_->Init()) return true;
  EXPECT_THAT(
      log_.Take(),
      testing::Each(testing::StartsWith("4 #account#CheckAndCreateTable#  Fail to sqlite3_")));
  EXPECT_EQ(store_->GetUserByUserId("id0", user_), 3);
  EXPECT_EQ(store_->RemoveUser("uuid0"), 3);
  return false;
}

std::set<std::string> DamagedStoreTest::Readable() {
  std::set<std::string> found;
  for (int i = 0; i < 40; ++i) {
    const int code = store_->GetUserByUserUuid("uuid" + std::to_string(i), user_);
    EXPECT_TRUE(code == 1 || code == 4 || code == 6) << code;
    if (code == 1) found.insert(user_.userUuid + user_.userId);
  }
  std::vector<std::string> list;
  const int code = store_->GetAllFriendsUuidList("uuid1", list);
  EXPECT_TRUE(code == 1 || code == 4) << code;
  return found;
}

TEST_F(DamagedStoreTest, ItIsNotMadeWorse) {
  const std::string path = folder_ + "/store/account.db";
  const std::string whole = ReadFile(path);
  std::string noise(512, '\0');
  std::mt19937 random;
  for (char& c : noise) c = static_cast<char>(random());
  int opened = 0;
  for (size_t at = 0; at < whole.size(); at += 512) {
    const std::string damaged[] = {whole.substr(0, at), std::string(whole).replace(at, 512, noise),
                                   std::string(whole).replace(at, 512, std::string(512, '\0'))};
    for (const std::string& bytes : damaged) {
      SCOPED_TRACE(std::to_string(at) + " of " + std::to_string(bytes.size()));
      std::ofstream(path, std::ios::binary) << bytes;
      if (Open()) {
        ++opened;
        const std::set<std::string> before = Readable();
        EXPECT_TRUE(bytes.empty() || ReadFile(path) == bytes);
        store_->ModifyUser({"uuid3", "id3", "other", "3", "", "", "", "", ""});
        store_->AddFriend("uuid3", {"new", "new", "", "", "", "", ""});
        const std::set<std::string> after = Readable();
        EXPECT_TRUE(std::includes(after.begin(), after.end(), before.begin(), before.end()));
        log_.Take();
      } else {
        EXPECT_EQ(ReadFile(path), bytes);
      }
      store_.reset();
      EXPECT_FALSE(std::filesystem::exists(path + "-journal"));
    }
  }
  RecordProperty("opened", opened);
  RecordProperty("damages", static_cast<int>(whole.size() / 512 * 3));
}

TEST_F(DamagedStoreTest, WithoutRightsNothingIsWritten) {
  const std::string path = folder_ + "/store/account.db";
  const std::string whole = ReadFile(path);
  const struct {
    mode_t folder, file;
    bool opens;
  } cases[] = {{0500, 0600, true}, {0700, 0400, true}, {0700, 0, false}, {0, 0600, false}};
  constexpr uid_t kNobody = 65534;
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << std::oct << c.folder << " " << c.file);
    // Root has every right: this thread gives them up for files.
    if (geteuid() == 0) {
      ASSERT_EQ(chmod(folder_.c_str(), 0711), 0);
      ASSERT_EQ(chown((folder_ + "/store").c_str(), kNobody, kNobody), 0);
      ASSERT_EQ(chown(path.c_str(), c.opens ? kNobody : 0, 0), 0);
      setfsuid(kNobody);
    }
    chmod(path.c_str(), c.file);
    chmod((folder_ + "/store").c_str(), c.folder);
    EXPECT_EQ(Open(), c.opens);
    if (c.opens) {
      EXPECT_EQ(store_->RemoveUser("uuid3"), 1);
      EXPECT_EQ(Readable().count("uuid3id3"), 1U);
    }
    store_.reset();
    setfsuid(geteuid());
    chmod((folder_ + "/store").c_str(), 0700);
    chmod(path.c_str(), 0600);
    EXPECT_EQ(ReadFile(path), whole);
  }
}

}  // namespace
}  // namespace account
