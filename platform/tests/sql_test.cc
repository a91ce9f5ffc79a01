#include <gtest/gtest.h>

#include "sql/connection.h"
#include "sql/statement.h"
#include "tests/test_support.h"

namespace {

using std::string_literals::operator""s;

class SqlTest : public testing::Test {
 protected:
  SqlTest() {
    EXPECT_TRUE(connection_.Open(path_) && connection_.Execute("CREATE TABLE T (a, b UNIQUE)"));
  }

  TestFolder folder_;
  const FilePath path_{folder_.File("test.db")};
  sql::Connection connection_;
};

TEST_F(SqlTest, BindsAndReadsBytes) {
  for (const std::string& text : {"plain"s, ""s, "it's"s, "a\0b"s, "ä"s, "\xff"s}) {
    sql::Statement insert = connection_.GetUniqueStatement("REPLACE INTO T (b, a) VALUES (9, ?)");
    EXPECT_TRUE(insert.BindString(0, text) && !insert.BindString(1, "no such parameter"));
    EXPECT_TRUE(!insert.Succeeded() && insert.Run() && insert.Succeeded());
    sql::Statement made = connection_.GetUniqueStatement("SELECT a, NULL, a IS NULL FROM T");
    sql::Statement select(std::move(made));
    EXPECT_TRUE(select.Step() && select.Succeeded() && select.ColumnString(0) == text) << text;
    EXPECT_TRUE(select.ColumnString(1).empty() && select.ColumnString(2) == "0");
    EXPECT_TRUE(!select.Step() && select.Succeeded());
  }
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
  sql::Statement twice = connection_.GetUniqueStatement("INSERT INTO T (b) VALUES (1), (1)");
  EXPECT_FALSE(twice.Run() || twice.Succeeded());
  EXPECT_FALSE(connection_.Execute("nonsense") || connection_.Open(path_));
}

TEST_F(SqlTest, AClosedConnectionAnswers) {
  sql::Statement statement = connection_.GetUniqueStatement("SELECT 1");
  connection_.Close();
  EXPECT_TRUE(statement.Step());  // It keeps the file open itself.
  connection_.SetBusyHandler(nullptr, nullptr);
  EXPECT_EQ(connection_.GetErrorMessage(), "sql::Connection has no connection.");
  EXPECT_FALSE(connection_.Execute("SELECT 1") || connection_.DoesTableExist("T"));
  EXPECT_FALSE(connection_.GetUniqueStatement("SELECT 1").is_valid());
  EXPECT_FALSE(connection_.Open(FilePath(folder_.File("no/folder"))) || connection_.is_open());
  EXPECT_TRUE(connection_.Open(path_));
}

TEST_F(SqlTest, FindsTablesInPlainFiles) {
  sql::Statement journal = connection_.GetUniqueStatement("PRAGMA journal_mode");
  EXPECT_TRUE(journal.Step() && journal.ColumnString(0) == "delete");
  EXPECT_TRUE(connection_.DoesTableExist("T"));
  EXPECT_FALSE(connection_.DoesTableExist("t") || connection_.DoesTableExist("T' OR '1'='1"));
  const std::string text(2000, 'x');
  WriteFile(folder_.File("text"), text);
  sql::Connection other;
  EXPECT_TRUE(other.Open(FilePath(folder_.File("text"))) && !other.DoesTableExist("T"));
  EXPECT_EQ(ReadFile(folder_.File("text")), text);
}

}  // namespace
