#include "core_fw/account/src/session_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <uuid/uuid.h>

namespace {

bool g_same_uuid = false;

}  // namespace

// Instead of libuuid's, so that two sessions can have one ID.
extern "C" void uuid_generate(uuid_t uuid) {
  g_same_uuid ? uuid_clear(uuid) : uuid_generate_random(uuid);
}

namespace account {
namespace {

using testing::ElementsAre;
using testing::MatchesRegex;

std::string Add(SessionTable& table, const std::string& user_id) {
  std::string session_id;
  EXPECT_EQ(table.AddSession(user_id, &session_id), 1);
  return session_id;
}

bool Expired(SessionTable& table, const std::string& session_id) {
  bool expired = !session_id.empty();
  EXPECT_EQ(table.CountAndCheckExpiry(session_id, &expired), 1);
  return expired;
}

std::vector<std::string> Ids(SessionTable& table) {
  std::vector<std::string> ids{"kept"};
  EXPECT_EQ(table.GetAllSessionIds(&ids), 1);
  return ids;
}

TEST(SessionTable, KeepsOrderAndNeedsTheExactId) {
  SessionTable table;
  EXPECT_THAT(Ids(table), ElementsAre("kept"));
  const std::string a = Add(table, "ann");
  const std::string b = Add(table, "ann");
  const std::string c = Add(table, "cid");
  EXPECT_THAT(a, MatchesRegex("3[0-9a-f]{7}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"));
  EXPECT_NE(a, b);
  EXPECT_THAT(Ids(table), ElementsAre("kept", a, b, c));
  EXPECT_EQ(table.RemoveSession(b), 1);
  EXPECT_EQ(table.RemoveSession(b), 1);
  EXPECT_THAT(Ids(table), ElementsAre("kept", a, c));

  std::string user = "untouched";
  for (const std::string& unknown : {b, std::string(), a.substr(1), a + "x", a + '\0'}) {
    EXPECT_EQ(table.HasSession(unknown), 2);
    EXPECT_EQ(table.GetSessionUserId(unknown, &user), 2);
    EXPECT_EQ(table.SetSessionUserId(unknown, "x"), 2);
    EXPECT_EQ(table.ResetSessionCount(unknown), 1);
  }
  EXPECT_EQ(user, "untouched");
  EXPECT_EQ(table.SetSessionUserId(c, "dan"), 1);
  EXPECT_EQ(table.GetSessionUserId(c, &user), 1);
  EXPECT_EQ(user, "dan");
  EXPECT_EQ(table.HasSession(a), 1);
  EXPECT_EQ(table.RemoveAllSessions(), 1);
  EXPECT_EQ(table.HasSession(a), 2);
}

TEST(SessionTable, ExpiryWalkStopsAtTheFirstExpiredRecord) {
  SessionTable table;
  const std::string a = Add(table, "ann");
  const std::string b = Add(table, "ben");
  EXPECT_EQ(table.SetLifetime(6), 1);
  for (int i = 0; i < 5; ++i) EXPECT_FALSE(Expired(table, a));
  EXPECT_FALSE(Expired(table, b));
  EXPECT_EQ(table.SetLifetime(2), 1);
  // The first record has expired: the second is reported expired without being counted.
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(Expired(table, b));
  EXPECT_EQ(table.RemoveSession(a), 1);
  EXPECT_EQ(table.SetLifetime(3), 1);
  EXPECT_FALSE(Expired(table, b));
  EXPECT_TRUE(Expired(table, b));
  EXPECT_EQ(table.ResetSessionCount(b), 1);
  EXPECT_FALSE(Expired(table, b));
}

TEST(SessionTable, AResetIsForEveryRecordWithTheId) {
  SessionTable table;
  g_same_uuid = true;
  const std::string id = Add(table, "ann");
  EXPECT_EQ(Add(table, "ben"), id);
  g_same_uuid = false;
  EXPECT_EQ(table.SetLifetime(2), 1);
  EXPECT_FALSE(Expired(table, id));
  EXPECT_EQ(table.ResetSessionCount(id), 1);
  EXPECT_FALSE(Expired(table, id));
}

}  // namespace
}  // namespace account
