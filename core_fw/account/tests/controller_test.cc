#include <gtest/gtest.h>
#include <sqlite3.h>

#include "core_fw/account/src/account_controller.h"
#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

using ControllerTest = AccountTest;

int g_rows = 0;

int CountRow(unsigned /*event*/, void* /*context*/, void* /*statement*/, void* /*detail*/) {
  ++g_rows;
  return 0;
}

// SQLite calls it for each connection that is opened.
int TraceRows(sqlite3* database, char** /*error*/, const void* /*routines*/) {
  return sqlite3_trace_v2(database, SQLITE_TRACE_ROW, &CountRow, nullptr);
}

TEST_F(ControllerTest, TheNetworkSettingReadsTheWholeListOfUsers) {
  config_["account_enable_MIRLO_network_setting"] = "on";
  StartRuntime();
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(&TraceRows));
  AccountController controller;
  EXPECT_TRUE(controller.Init());
  sqlite3_reset_auto_extension();
  Sql("INSERT INTO Users (userUuid) VALUES ('u'), ('v'), ('w')");
  g_rows = 0;
  controller.InitNetworkSetting();
  EXPECT_EQ(g_rows, 3);
  log_.Take();
}

}  // namespace
}  // namespace account
