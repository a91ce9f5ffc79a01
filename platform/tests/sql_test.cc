#include <gtest/gtest.h>

#include <memory>

#include "sql/connection.h"
#include "sql/statement.h"
#include "tests/test_support.h"

namespace {

using std::string_literals::operator""s;

class SqlTest : public testing::Test {
 protected:
  SqlTest() {
    EXPECT_TRUE(connection_.Open(path_));
    EXPECT_TRUE(connection_.Execute("CREATE TABLE T (a, b)"));
  }

  std::string Ask(const char* sql) {
    sql::Statement statement = connection_.GetUniqueStatement(sql);
    return statement.Step() ? statement.ColumnString(0) : "no row";
  }

  TestFolder folder_;
  const FilePath path_{folder_.File("test.db")};
  sql::Connection connection_;
};

int CountCalls(void* context, int count) {
  EXPECT_EQ(*static_cast<int*>(context), count);
  ++*static_cast<int*>(context);
  return count < 10 ? 1 : 0;
}

TEST_F(SqlTest, BindsAndReadsBytes) {
  const std::string kTexts[] = {"plain", "", "it's", "a\0b"s, "ä", "\xff"};
  for (const std::string& text : kTexts) {
    sql::Statement insert = connection_.GetUniqueStatement("INSERT INTO T (b, a) VALUES (?, ?)");
    EXPECT_FALSE(insert.Succeeded());
    EXPECT_TRUE(insert.BindString(1, text));
    EXPECT_FALSE(insert.BindString(2, "no such parameter"));
    EXPECT_TRUE(insert.Run());
    EXPECT_TRUE(insert.Succeeded());
  }
  sql::Statement made = connection_.GetUniqueStatement("SELECT a, b FROM T ORDER BY rowid");
  sql::Statement select(std::move(made));
  for (const std::string& text : kTexts) {
    ASSERT_TRUE(select.Step());
    EXPECT_EQ(select.ColumnString(0), text);
    EXPECT_EQ(select.ColumnString(1), "");  // NULL.
  }
  EXPECT_FALSE(select.Step());
  EXPECT_TRUE(select.Succeeded());
  EXPECT_EQ(Ask("SELECT count(*) FROM T WHERE a IS NULL"), "0");
}

TEST_F(SqlTest, ResetsAndClears) {
  sql::Statement echo = connection_.GetUniqueStatement("SELECT ?");
  EXPECT_TRUE(echo.BindString(0, "x"));
  EXPECT_FALSE(echo.Run());  // There is a row.
  echo.Reset(false);
  EXPECT_TRUE(echo.Step());
  EXPECT_EQ(echo.ColumnString(0), "x");
  echo.Reset(true);
  EXPECT_TRUE(echo.Step());
  EXPECT_EQ(echo.ColumnString(0), "");
  echo.Clear();
  EXPECT_FALSE(echo.is_valid() || echo.Succeeded() || echo.Step());
}

TEST_F(SqlTest, AFailureIsAnAnswer) {
  sql::Statement invalid = connection_.GetUniqueStatement("SELECT * FROM Missing");
  EXPECT_FALSE(invalid.is_valid());
  EXPECT_EQ(connection_.GetErrorMessage(), "no such table: Missing");
  EXPECT_FALSE(invalid.BindString(0, "") || invalid.Step() || invalid.Run());
  EXPECT_EQ(invalid.ColumnString(0), "");
  invalid.Reset(true);
  EXPECT_FALSE(invalid.Succeeded());

  EXPECT_TRUE(connection_.Execute("CREATE UNIQUE INDEX I ON T (a); INSERT INTO T (a) VALUES (1)"));
  sql::Statement twice = connection_.GetUniqueStatement("INSERT INTO T (a) VALUES (1)");
  EXPECT_FALSE(twice.Run() || twice.Succeeded());
  EXPECT_FALSE(connection_.Execute("nonsense"));
  EXPECT_FALSE(connection_.Open(path_));
}

TEST_F(SqlTest, AClosedConnectionAnswers) {
  sql::Statement statement = connection_.GetUniqueStatement("SELECT 1");
  connection_.Close();
  EXPECT_FALSE(connection_.is_open());
  EXPECT_TRUE(statement.Step());  // It keeps the file open itself.
  EXPECT_EQ(connection_.GetErrorMessage(), "sql::Connection has no connection.");
  EXPECT_FALSE(connection_.Execute("SELECT 1"));
  EXPECT_FALSE(connection_.DoesTableExist("T"));
  EXPECT_FALSE(connection_.GetUniqueStatement("SELECT 1").is_valid());
  connection_.SetBusyHandler(CountCalls, nullptr);
  connection_.Close();
  EXPECT_FALSE(connection_.Open(FilePath(folder_.File("no/such/folder.db"))));
  EXPECT_FALSE(connection_.is_open());
  EXPECT_TRUE(connection_.Open(path_));
}

TEST_F(SqlTest, FindsTables) {
  EXPECT_TRUE(connection_.DoesTableExist("T"));
  EXPECT_FALSE(connection_.DoesTableExist("t"));
  EXPECT_FALSE(connection_.DoesTableExist("T' OR '1'='1"));
  const std::string text(2000, 'x');
  WriteFile(folder_.File("text"), text);
  sql::Connection other;
  EXPECT_TRUE(other.Open(FilePath(folder_.File("text"))));
  EXPECT_FALSE(other.DoesTableExist("T"));
  EXPECT_EQ(ReadFile(folder_.File("text")), text);
}

TEST_F(SqlTest, CallsTheBusyHandlerWhileAnotherConnectionHoldsTheFile) {
  sql::Connection holder;
  ASSERT_TRUE(holder.Open(path_));
  ASSERT_TRUE(holder.Execute("BEGIN EXCLUSIVE"));
  for (const bool knows_schema : {true, false}) {
    sql::Connection fresh;
    ASSERT_TRUE(fresh.Open(path_));
    sql::Connection& waiting = knows_schema ? connection_ : fresh;
    int calls = 0;
    waiting.SetBusyHandler(CountCalls, &calls);
    sql::Statement select = waiting.GetUniqueStatement("SELECT * FROM T");
    EXPECT_EQ(select.is_valid(), knows_schema);
    EXPECT_FALSE(select.Step());
    EXPECT_EQ(calls, 11) << knows_schema;
    EXPECT_EQ(waiting.GetErrorMessage(), "database is locked");
    calls = 0;
    EXPECT_FALSE(waiting.DoesTableExist("T"));
    EXPECT_EQ(calls, 11);
    calls = 0;
    EXPECT_FALSE(waiting.Execute("INSERT INTO T (a) VALUES (1)"));
    connection_.SetBusyHandler(nullptr, nullptr);
  }
}

TEST_F(SqlTest, LeavesTheEnginesDefaults) {
  EXPECT_EQ(Ask("PRAGMA journal_mode"), "delete");
  EXPECT_EQ(Ask("PRAGMA page_size"), "4096");
  EXPECT_EQ(Ask("PRAGMA encoding"), "UTF-8");
  EXPECT_EQ(Ask("PRAGMA synchronous"), "2");
}

}  // namespace
