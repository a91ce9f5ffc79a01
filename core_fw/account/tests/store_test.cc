#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <thread>

#include "base/test_clock.h"
#include "base/time.h"
#include "core_fw/account/src/account_db_wrapper.h"
#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kUsersSchema[] =
    "CREATE TABLE Users (userUuid VARCHAR(256) PRIMARY KEY, userId VARCHAR(128), userName "
    "VARCHAR(64), userGuid VARCHAR(256), accessToken VARCHAR(256), refreshToken VARCHAR(256), "
    "registeredDate VARCHAR(64), lastSignInDate VARCHAR(64), lastInfoChangedDate VARCHAR(64))";
constexpr char kFriendsSchema[] =
    "CREATE TABLE Friends (friendUuid VARCHAR(256) PRIMARY KEY, userUuid VARCHAR(256), friendId "
    "VARCHAR(128), friendName VARCHAR(64), friendGuid VARCHAR(128), friendQorDeviceName "
    "VARCHAR(64), friendQorDevicePhysicalAddressText VARCHAR(256), friendQorDevicePeerId "
    "VARCHAR(256))";

UserInfo User(const std::string& mark) {
  return {"uuid" + mark,    "id" + mark,         "name" + mark,   "guid" + mark,   "access" + mark,
          "refresh" + mark, "registered" + mark, "signed" + mark, "changed" + mark};
}

FriendInfo Friend(const std::string& mark) {
  return {"fuuid" + mark, "fid" + mark,  "fname" + mark, "fguid" + mark,
          "dev" + mark,   "addr" + mark, "peer" + mark};
}

std::string Text(const UserInfo& u) {
  return u.userUuid + "|" + u.userId + "|" + u.userName + "|" + u.userGuid + "|" + u.accessToken +
         "|" + u.refreshToken + "|" + u.registeredDate + "|" + u.lastSignInDate + "|" +
         u.lastInfoChangedDate;
}

std::string Text(const FriendInfo& f) {
  return f.friendUuid + "|" + f.friendId + "|" + f.friendName + "|" + f.friendGuid + "|" +
         f.friendQorDeviceName + "|" + f.friendQorDevicePhysicalAddressText + "|" +
         f.friendQorDevicePeerId;
}

class StoreTest : public AccountTest {
 protected:
  void Open() {
    StartRuntime();
    ASSERT_TRUE(store_.Init());
  }

  std::string UserById(const std::string& id) {
    UserInfo user;
    EXPECT_EQ(store_.GetUserByUserId(id, user), 1);
    return Text(user);
  }

  AccountDBWrapper store_;
};

// Another connection that holds the database alone, as another process would.
class Holder {
 public:
  explicit Holder(const std::string& path) {
    EXPECT_EQ(sqlite3_open(path.c_str(), &database_), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database_, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  }
  ~Holder() { sqlite3_close(database_); }

 private:
  sqlite3* database_ = nullptr;
};

// Runs `call` while the clock gives it `pauses` of half a second, one after the other.
AccountResult WithPauses(base::TestClock& clock, int pauses,
                         const std::function<AccountResult()>& call) {
  AccountResult result = 0;
  std::thread caller([&] { result = call(); });
  for (int i = 0; i < pauses; ++i) {
    clock.WaitForSleepers(1);
    clock.Advance(base::TimeDelta::FromMilliseconds(500));
  }
  caller.join();
  return result;
}

TEST_F(StoreTest, MakesMissingTablesOneByOneAndKeepsWhatIsThere) {
  const struct { const char* before; } cases[] = {{""}, {kUsersSchema}, {kFriendsSchema}};
  StartRuntime();
  for (const auto& c : cases) {
    std::filesystem::remove(database_path());
    Sql(c.before);
    AccountDBWrapper store;
    ASSERT_TRUE(store.Init());
    ASSERT_TRUE(store.Init());
    EXPECT_THAT(Sql("SELECT sql FROM sqlite_master WHERE type='table' ORDER BY name DESC"),
                ElementsAre(kUsersSchema, kFriendsSchema));
    EXPECT_THAT(Sql("SELECT name FROM sqlite_master WHERE type='index' AND sql IS NOT NULL"),
                IsEmpty());
  }
}

TEST_F(StoreTest, UsersComeBackAsTheyWentIn) {
  Open();
  EXPECT_EQ(store_.AddUser(User("1")), 1);
  EXPECT_EQ(store_.AddUser(User("2")), 1);
  UserInfo user;
  EXPECT_EQ(store_.GetUserByUserUuid("uuid2", user), 1);
  EXPECT_EQ(Text(user), Text(User("2")));
  EXPECT_EQ(UserById("id1"), Text(User("1")));
  EXPECT_THAT(Sql("SELECT * FROM Users"), ElementsAre(Text(User("1")), Text(User("2"))));

  UserInfo changed = User("9");
  changed.userUuid = "uuid1";
  EXPECT_EQ(store_.ModifyUser(changed), 1);
  EXPECT_EQ(UserById("id9"), Text(changed));
  EXPECT_EQ(store_.ModifyUser(User("unknown")), 1);  // No row: a success all the same.

  std::string uuid = "untouched";
  EXPECT_EQ(store_.GetUserUUIDFromUserID("id1", uuid), 5);
  EXPECT_EQ(store_.GetUserByUserId("id1", user), 5);
  EXPECT_EQ(store_.GetUserByUserUuid("nobody", user), 6);
  EXPECT_EQ(uuid + Text(user), "untouched" + Text(User("2")));
  EXPECT_EQ(store_.GetUserUUIDFromUserID("id9", uuid), 1);
  EXPECT_EQ(uuid, "uuid1");

  std::vector<std::string> uuids{"kept"};
  EXPECT_EQ(store_.GetAllUsersUuidList(uuids), 1);
  EXPECT_THAT(uuids, ElementsAre("kept", "uuid1", "uuid2", "qornsystem"));
  EXPECT_EQ(store_.RemoveUser("uuid1"), 1);
  EXPECT_EQ(store_.RemoveUser("uuid1"), 1);
  EXPECT_THAT(Sql("SELECT userUuid FROM Users"), ElementsAre("uuid2"));
}

TEST_F(StoreTest, DuplicatesAreFoundInTheirOrder) {
  Open();
  ASSERT_EQ(store_.AddUser(User("1")), 1);
  UserInfo both = User("1");
  both.userUuid = "other";
  EXPECT_EQ(store_.AddUser(both), 12);
  both.userId = "other";
  EXPECT_EQ(store_.AddUser(both), 13);
  UserInfo system = User("3");
  system.userId = "qornsystem";  // Not checked: the row is there, and no look-up reaches it.
  EXPECT_EQ(store_.AddUser(system), 1);

  EXPECT_EQ(store_.AddFriend("uuid1", Friend("1")), 1);
  FriendInfo again = Friend("2");
  again.friendId = "fid1";
  EXPECT_EQ(store_.AddFriend("uuid1", again), 14);
  EXPECT_EQ(store_.AddFriend("uuid2", again), 1);
  EXPECT_EQ(Sql("SELECT count(*) FROM Friends").at(0), "2");
}

TEST_F(StoreTest, FriendsComeBackWithoutTheirOwner) {
  Open();
  ASSERT_EQ(store_.AddFriend("uuid1", Friend("1")), 1);
  ASSERT_EQ(store_.AddFriend("uuid1", Friend("2")), 1);
  EXPECT_EQ(Sql("SELECT * FROM Friends").at(0), "fuuid1|uuid1|fid1|fname1|fguid1|dev1|addr1|peer1");
  FriendInfo found;
  EXPECT_EQ(store_.GetFriend("fuuid2", found), 1);
  EXPECT_EQ(Text(found), Text(Friend("2")));
  EXPECT_EQ(store_.GetFriend("nobody", found), 9);
  EXPECT_EQ(Text(found), Text(Friend("2")));

  std::string uuid = "untouched";
  const char* const unknown[][3] = {
      {"uuid2", "fid1", "peer1"}, {"uuid1", "fid2", "peer1"}, {"uuid1", "fid1", "peer2"}};
  for (const auto& u : unknown) {
    EXPECT_EQ(store_.GetFriendUUIDFromFriendIDAndFriendPeerID(u[0], u[1], u[2], uuid), 8);
  }
  EXPECT_EQ(uuid, "untouched");
  EXPECT_EQ(store_.GetFriendUUIDFromFriendIDAndFriendPeerID("uuid1", "fid1", "peer1", uuid), 1);
  EXPECT_EQ(uuid, "fuuid1");
  std::vector<std::string> uuids{"kept"};
  EXPECT_EQ(store_.GetAllFriendsUuidList("uuid1", uuids), 1);
  EXPECT_EQ(store_.GetAllFriendsUuidList("nobody", uuids), 1);
  EXPECT_THAT(uuids, ElementsAre("kept", "fuuid1", "fuuid2"));
  EXPECT_EQ(store_.RemoveFriend("fuuid1"), 1);
  EXPECT_EQ(store_.RemoveFriend("fuuid1"), 1);
  EXPECT_EQ(Sql("SELECT friendUuid FROM Friends").at(0), "fuuid2");
  ASSERT_EQ(store_.AddUser(User("1")), 1);
  EXPECT_EQ(store_.RemoveUser("uuid1"), 1);  // Leaves the friends in place.
  EXPECT_EQ(Sql("SELECT count(*) FROM Friends").at(0), "1");
}

TEST_F(StoreTest, DeleteAllEmptiesBothTablesAndShrinksTheFile) {
  Open();
  UserInfo large = User("1");
  large.userName = std::string(1 << 20, 'x');
  ASSERT_EQ(store_.AddUser(large), 1);
  ASSERT_EQ(store_.AddFriend("uuid1", Friend("1")), 1);
  EXPECT_EQ(store_.DeleteAll(), 1);
  EXPECT_EQ(store_.DeleteAll(), 1);
  EXPECT_THAT(Sql("SELECT userUuid FROM Users UNION SELECT friendUuid FROM Friends"), IsEmpty());
  EXPECT_LT(std::filesystem::file_size(database_path()), 65536u);
}

TEST_F(StoreTest, AnyBytesSurvive) {
  Open();
  using std::string_literals::operator""s;
  const std::string values[] = {std::string(100000, 'y'), "'; DROP TABLE Users; --", "a\0b"s,
                                "\xff\xfe", ""};
  for (const std::string& value : values) {
    UserInfo user = User("1");
    user.userId = value;
    user.accessToken = value;
    ASSERT_EQ(store_.AddUser(user), 1);
    EXPECT_EQ(UserById(value), Text(user));
    ASSERT_EQ(store_.RemoveUser("uuid1"), 1);
  }
}

TEST_F(StoreTest, TheLastOfSeveralRowsWins) {
  Open();
  ASSERT_EQ(store_.AddUser(User("1")), 1);
  ASSERT_EQ(store_.AddUser(User("2")), 1);
  UserInfo same = User("1");
  same.userUuid = "uuid2";
  ASSERT_EQ(store_.ModifyUser(same), 1);
  std::string uuid;
  EXPECT_EQ(store_.GetUserUUIDFromUserID("id1", uuid), 1);
  EXPECT_EQ(uuid, "uuid2");
  EXPECT_EQ(UserById("id1"), Text(same));
}

TEST_F(StoreTest, WithoutADatabaseOnlyTheSystemAccountAnswers) {
  config_.erase("account_db_path");
  StartRuntime();
  const std::vector<std::string> missing = {
      Line(4, "Init",
           "Account Component Initialization failed as there is no db file name in config.xml")};
  EXPECT_FALSE(store_.Init());
  EXPECT_FALSE(store_.Init());
  EXPECT_EQ(log_.Take().size(), 2 * missing.size());
  UserInfo user = User("1");
  FriendInfo found;
  std::string uuid;
  std::vector<std::string> list;
  EXPECT_EQ(store_.GetUserByUserId("qornsystem", user), 1);
  EXPECT_EQ(Text(user), "qornsystem|qornsystem|qornsystem|qornsystem|||||");
  user = User("1");
  EXPECT_EQ(store_.GetUserByUserUuid("qornsystem", user), 1);
  EXPECT_EQ(Text(user), "qornsystem|qornsystem|qornsystem|qornsystem|||||");
  EXPECT_EQ(store_.GetUserUUIDFromUserID("qornsystem", uuid), 1);
  EXPECT_EQ(uuid, "qornsystem");
  const AccountResult closed[] = {
      store_.AddUser(user),
      store_.RemoveUser("u"),
      store_.ModifyUser(user),
      store_.AddFriend("u", found),
      store_.RemoveFriend("f"),
      store_.DeleteAll(),
      store_.GetUserByUserUuid("u", user),
      store_.GetUserByUserId("i", user),
      store_.GetFriend("f", found),
      store_.GetUserUUIDFromUserID("i", uuid),
      store_.GetFriendUUIDFromFriendIDAndFriendPeerID("u", "f", "p", uuid),
      store_.GetAllUsersUuidList(list),
      store_.GetAllFriendsUuidList("u", list)};
  for (AccountResult result : closed) EXPECT_EQ(result, 3);
  EXPECT_THAT(list, IsEmpty());
  EXPECT_THAT(log_.Take(), IsEmpty());
}

TEST_F(StoreTest, AFailedInitMayBeTriedAgain) {
  // A folder where the file should be.
  std::filesystem::create_directory(database_path());
  StartRuntime();
  EXPECT_FALSE(store_.Init());
  EXPECT_THAT(log_.Take(), ElementsAre(Line(4, "CheckAndCreateTable", "Fail to sqlite3_open")));
  std::filesystem::remove(database_path());
  std::ofstream(database_path()) << "this is no database, and it is longer than a header: "
                                 << std::string(4096, 'x');
  const std::vector<std::string> both = {
      Line(4, "CheckAndCreateTable", "Fail to sqlite3_exec Users"),
      Line(4, "CheckAndCreateTable", "Fail to sqlite3_exec Friends")};
  EXPECT_FALSE(store_.Init());
  EXPECT_EQ(log_.Take(), both);
  EXPECT_EQ(store_.AddUser(User("1")), 3);
  std::filesystem::remove(database_path());
  EXPECT_TRUE(store_.Init());
  EXPECT_EQ(store_.AddUser(User("1")), 1);
}

TEST_F(StoreTest, WithoutAPathItSaysSo) {
  EXPECT_FALSE(store_.CheckAndCreateTable());
  EXPECT_THAT(log_.Take(), ElementsAre(Line(4, "CheckAndCreateTable", "DB Filename is not set")));
}

TEST_F(StoreTest, StoragePathAndFileNameAreRunTogether) {
  config_["qorn_storage_path"] = folder_.path() + "/sub";
  Open();
  EXPECT_TRUE(std::filesystem::exists(folder_.path() + "/subaccount.db"));
}

TEST_F(StoreTest, WithoutAStoragePathTheFileIsBesideTheProgram) {
  config_.erase("qorn_storage_path");
  const std::string name = "qorn-test-" + std::to_string(getpid()) + ".db";
  config_["account_db_path"] = name;
  Open();
  const auto file = std::filesystem::read_symlink("/proc/self/exe").parent_path() / name;
  EXPECT_TRUE(std::filesystem::remove(file)) << file;
}

TEST_F(StoreTest, AStatementThatCannotBePreparedIsLoggedUnderItsOperation) {
  Open();
  Sql("DROP TABLE Friends");
  const std::string text = "Fail to sqlite3_exec(), no such table: Friends";
  // Prepared with the schema as it was; running it finds the change, which a look-up does not tell.
  FriendInfo found;
  EXPECT_EQ(store_.GetFriend("f", found), 9);
  EXPECT_EQ(store_.RemoveFriend("f"), 4);
  EXPECT_EQ(store_.AddFriend("u", Friend("1")), 4);
  ASSERT_EQ(store_.AddUser(User("1")), 1);
  EXPECT_EQ(store_.DeleteAll(), 4);
  EXPECT_THAT(log_.Take(), ElementsAre(Line(4, "RemoveFriend", text), Line(4, "AddFriend", text),
                                       Line(4, "DeleteAll", text)));
  EXPECT_EQ(Sql("SELECT count(*) FROM Users").at(0), "0");  // What ran before stays done.
}

TEST_F(StoreTest, ALockedDatabaseIsWaitedForElevenTimes) {
  Open();
  ASSERT_EQ(store_.AddUser(User("1")), 1);
  base::TestClock clock;
  {
    const Holder holder(database_path());
    UserInfo user;
    std::string uuid;
    std::vector<std::string> list;
    EXPECT_EQ(WithPauses(clock, 11, [&] { return store_.GetUserByUserId("id1", user); }), 5);
    EXPECT_EQ(WithPauses(clock, 11, [&] { return store_.GetUserByUserUuid("uuid1", user); }), 6);
    EXPECT_EQ(WithPauses(clock, 11, [&] { return store_.RemoveUser("uuid1"); }), 1);
    EXPECT_EQ(WithPauses(clock, 33, [&] { return store_.AddUser(User("2")); }), 1);
    EXPECT_EQ(WithPauses(clock, 11, [&] { return store_.GetAllUsersUuidList(list); }), 1);
    EXPECT_THAT(list, ElementsAre("qornsystem"));
    // A connection that has not read the schema yet cannot prepare.
    AccountDBWrapper fresh;
    EXPECT_EQ(WithPauses(clock, 44, [&] { return fresh.Init() ? 1 : 0; }), 0);
    EXPECT_THAT(log_.Take(),
                ElementsAre(Line(4, "CheckAndCreateTable", "Fail to sqlite3_exec Users"),
                            Line(4, "CheckAndCreateTable", "Fail to sqlite3_exec Friends")));
  }
  EXPECT_THAT(Sql("SELECT userUuid FROM Users"), ElementsAre("uuid1"));  // Nothing was written.
}

TEST_F(StoreTest, ASchemaThatMustBeReadWhileLockedIsAFailure) {
  Open();
  ASSERT_EQ(store_.DeleteAll(), 1);  // VACUUM makes the connection read the schema again.
  base::TestClock clock;
  const Holder holder(database_path());
  std::string uuid = "untouched";
  EXPECT_EQ(WithPauses(clock, 11, [&] { return store_.GetUserUUIDFromUserID("id1", uuid); }), 4);
  EXPECT_EQ(uuid, "untouched");
  EXPECT_THAT(log_.Take(), ElementsAre(Line(4, "GetUserUUIDFromUserID",
                                            "Fail to sqlite3_exec(), database is locked")));
}

}  // namespace
}  // namespace account
