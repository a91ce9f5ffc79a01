#include <gtest/gtest.h>

#include "sql/connection.h"
#include "sql/statement.h"
#include "tests/test_support.h"

namespace {

using std::string_literals::operator""s;

class SqlTest : public testing::Test {
 protected:
  SqlTest() {
    EXPECT_TRUE(connection_.Open(path_) && connection_.Execute("CREATE TABLE T (a, b)"));
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
    EXPECT_TRUE(insert.BindString(1, text) && !insert.BindString(2, "no such parameter"));
    EXPECT_TRUE(!insert.Succeeded() && insert.Run() && insert.Succeeded());
  }
  sql::Statement made = connection_.GetUniqueStatement("SELECT a, b, a IS NULL FROM T");
  sql::Statement select(std::move(made));
  for (const std::string& text : kTexts) {
    EXPECT_TRUE(select.Step());
    EXPECT_EQ(select.ColumnString(0), text);
    EXPECT_EQ(select.ColumnString(1), "");  // NULL.
    EXPECT_EQ(select.ColumnString(2), "0");
  }
  EXPECT_TRUE(!select.Step() && select.Succeeded());
}

TEST_F(SqlTest, ResetsAndClears) {
  sql::Statement echo = connection_.GetUniqueStatement("SELECT ?");
  EXPECT_TRUE(echo.BindString(0, "x") && !echo.Run());  // There is a row.
  echo.Reset(false);
  EXPECT_TRUE(echo.Step() && echo.ColumnString(0) == "x");
  echo.Reset(true);
  EXPECT_TRUE(echo.Step() && echo.ColumnString(0).empty());
  echo.Clear();
  EXPECT_FALSE(echo.is_valid() || echo.Succeeded() || echo.Step());
}

TEST_F(SqlTest, AFailureIsAnAnswer) {
  sql::Statement invalid = connection_.GetUniqueStatement("SELECT * FROM Missing");
  EXPECT_EQ(connection_.GetErrorMessage(), "no such table: Missing");
  invalid.Reset(true);
  EXPECT_FALSE(invalid.is_valid() || invalid.BindString(0, "") || invalid.Step() || invalid.Run());
  EXPECT_TRUE(invalid.ColumnString(0).empty() && !invalid.Succeeded());
  EXPECT_TRUE(connection_.Execute("CREATE UNIQUE INDEX I ON T (a); INSERT INTO T (a) VALUES (1)"));
  sql::Statement twice = connection_.GetUniqueStatement("INSERT INTO T (a) VALUES (1)");
  EXPECT_FALSE(twice.Run() || twice.Succeeded());
  EXPECT_FALSE(connection_.Execute("nonsense") || connection_.Open(path_));
}

TEST_F(SqlTest, AClosedConnectionAnswers) {
  sql::Statement statement = connection_.GetUniqueStatement("SELECT 1");
  connection_.Close();
  EXPECT_TRUE(statement.Step());  // It keeps the file open itself.
  EXPECT_EQ(connection_.GetErrorMessage(), "sql::Connection has no connection.");
  EXPECT_FALSE(connection_.Execute("SELECT 1") || connection_.DoesTableExist("T"));
  EXPECT_FALSE(connection_.GetUniqueStatement("SELECT 1").is_valid());
  connection_.SetBusyHandler(CountCalls, nullptr);
  EXPECT_FALSE(connection_.Open(FilePath(folder_.File("no/such/folder.db"))));
  EXPECT_FALSE(connection_.is_open());
  EXPECT_TRUE(connection_.Open(path_));
}

TEST_F(SqlTest, FindsTables) {
  EXPECT_TRUE(connection_.DoesTableExist("T"));
  EXPECT_FALSE(connection_.DoesTableExist("t") || connection_.DoesTableExist("T' OR '1'='1"));
  const std::string text(2000, 'x');
  WriteFile(folder_.File("text"), text);
  sql::Connection other;
  EXPECT_TRUE(other.Open(FilePath(folder_.File("text"))) && !other.DoesTableExist("T"));
  EXPECT_EQ(ReadFile(folder_.File("text")), text);
}

TEST_F(SqlTest, CallsTheBusyHandlerWhileAnotherConnectionHoldsTheFile) {
  sql::Connection holder;
  ASSERT_TRUE(holder.Open(path_) && holder.Execute("BEGIN EXCLUSIVE"));
  sql::Connection fresh;
  ASSERT_TRUE(fresh.Open(path_));
  for (sql::Connection* waiting : {&connection_, &fresh}) {
    int calls = 0;
    waiting->SetBusyHandler(CountCalls, &calls);
    sql::Statement select = waiting->GetUniqueStatement("SELECT * FROM T");
    EXPECT_EQ(select.is_valid(), waiting == &connection_);  // It knows the schema.
    EXPECT_FALSE(select.Step());
    EXPECT_EQ(calls, 11);
    EXPECT_EQ(waiting->GetErrorMessage(), "database is locked");
    calls = 0;
    EXPECT_TRUE(!waiting->DoesTableExist("T") && calls == 11);
  }
}

TEST_F(SqlTest, LeavesTheEnginesDefaults) {
  const char* const kCases[][2] = {{"PRAGMA journal_mode", "delete"},
                                   {"PRAGMA page_size", "4096"},
                                   {"PRAGMA encoding", "UTF-8"},
                                   {"PRAGMA synchronous", "2"}};
  for (const auto& [sql, expected] : kCases) {
    sql::Statement statement = connection_.GetUniqueStatement(sql);
    EXPECT_TRUE(statement.Step() && statement.ColumnString(0) == expected) << sql;
  }
}

}  // namespace
