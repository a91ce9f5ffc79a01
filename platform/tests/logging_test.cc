#include "base/logging.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "base/test_clock.h"
#include "tests/test_support.h"

namespace {

class LoggingTest : public testing::Test {
 protected:
  LoggingTest() { EXPECT_TRUE(logging::SetLogFile(path_)); }
  ~LoggingTest() override {
    logging::SetLogMessageHandler({});
    logging::SetLogFile("");
  }
  static void Log(const std::string& text, int severity = logging::LOG_INFO) {
    logging::LogMessage("dir/file.cc", 42, severity).stream() << text;
  }
  // The file's lines without what stands before the text.
  static std::multiset<std::string> Texts(const std::string& path) {
    std::multiset<std::string> texts;
    std::ifstream stream(path);
    for (std::string line; std::getline(stream, line);) {
      texts.insert(line.substr(line.find("] ") + 2));
    }
    return texts;
  }

  TestFolder folder_;
  const std::string path_ = folder_.File("log");
};

TEST_F(LoggingTest, WritesThePrefixAndTheTextAsItIs) {
  base::TestClock clock;
  base::Time::Exploded now{};
  base::Time::Now().LocalExplode(&now);
  char stamp[80];
  snprintf(stamp, sizeof(stamp), "[%02d%02d/%02d%02d%02d:", now.month, now.day_of_month, now.hour,
           now.minute, now.second);
  const struct {
    int severity;
    std::string name;
  } kCases[] = {{-1, "VERBOSE"}, {0, "DETAILED_INFO"}, {1, "INTERNAL_INFO"}, {2, "INFO"},
                {3, "WARNING"},  {4, "ERROR"},         {5, "ERROR_REPORT"},  {6, "FATAL"},
                {-9, "VERBOSE"}, {9, "FATAL"}};
  std::string expected;
  for (const auto& c : kCases) {
    Log(" #text\n", c.severity);
    expected += stamp + c.name + ":dir/file.cc(42)]  #text\n\n";
  }
  EXPECT_EQ(ReadFile(path_), expected);
}

TEST_F(LoggingTest, LinesOfManyThreadsStayWhole) {
  const std::string text(5000, 'x');
  const auto log = [&text] {
    for (int line = 0; line < 200; ++line) Log(text);
  };
  {
    TestThread first(log);
    TestThread second(log);
  }
  EXPECT_EQ(Texts(path_).count(text), 400U);
  EXPECT_EQ(Texts(path_).size(), 400U);
}

TEST_F(LoggingTest, OpensTheFileAnewAndKeepsItWhenItCannot) {
  Log("one");
  std::filesystem::rename(path_, path_ + ".1");
  EXPECT_TRUE(logging::SetLogFile(path_));
  EXPECT_FALSE(logging::SetLogFile(folder_.File("no/such/folder")));
  Log("two");
  EXPECT_EQ(Texts(path_ + ".1"), std::multiset<std::string>{"one"});
  EXPECT_EQ(Texts(path_), std::multiset<std::string>{"two"});
}

TEST_F(LoggingTest, AHandlerTakesTheLinesItWantsAndMayUseTheLog) {
  std::string seen;
  logging::SetLogMessageHandler(
      [&seen](int severity, const char* file, int line, size_t start, const std::string& text) {
        seen += std::to_string(severity) + file + std::to_string(line) + text.substr(start);
        if (severity == logging::LOG_WARNING) logging::SetLogMessageHandler({});
        if (severity == logging::LOG_WARNING) Log("from the handler");
        return severity == logging::LOG_ERROR;
      });
  Log("taken", logging::LOG_ERROR);
  Log("passed on");
  Log("last", logging::LOG_WARNING);
  Log("unseen");
  EXPECT_EQ(seen, "4dir/file.cc42taken\n2dir/file.cc42passed on\n3dir/file.cc42last\n");
  EXPECT_EQ(Texts(path_),
            (std::multiset<std::string>{"from the handler", "last", "passed on", "unseen"}));
}

}  // namespace
