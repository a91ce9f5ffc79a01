#include "core_fw/account/src/session_table.h"

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

TEST(SessionTable, AResetIsForEveryRecordWithTheId) {
  SessionTable table;
  std::string first, second;
  g_same_uuid = true;
  for (std::string* id : {&first, &second}) EXPECT_EQ(table.AddSession("ann", id), 1);
  g_same_uuid = false;
  EXPECT_EQ(first, second);
  EXPECT_EQ(table.SetLifetime(2), 1);
  for (int i = 0; i < 2; ++i) {
    bool expired = true;
    EXPECT_EQ(table.CountAndCheckExpiry(first, &expired), 1);
    EXPECT_FALSE(expired);
    EXPECT_EQ(table.ResetSessionCount(first), 1);
  }
}

}  // namespace
}  // namespace account
