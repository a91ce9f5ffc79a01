#include "base/logging.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <set>

#include "base/test_clock.h"
#include "base/time.h"
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

  TestFolder folder_;
  const std::string path_ = folder_.File("log");
};

TEST_F(LoggingTest, WritesThePrefixAndTheTextAsItIs) {
  base::TestClock clock;
  base::Time::Exploded now{};
  base::Time::Now().LocalExplode(&now);
  char stamp[32];
  snprintf(stamp, sizeof(stamp), "[%02d%02d/%02d%02d%02d:", now.month, now.day_of_month, now.hour,
           now.minute, now.second);
  const struct {
    int severity;
    const char* name;
  } kCases[] = {{-1, "VERBOSE"}, {0, "DETAILED_INFO"}, {1, "INTERNAL_INFO"}, {2, "INFO"},
                {3, "WARNING"},  {4, "ERROR"},         {5, "ERROR_REPORT"},  {6, "FATAL"},
                {-9, "VERBOSE"}, {9, "FATAL"}};
  std::string expected;
  for (const auto& c : kCases) {
    Log(" #text\n", c.severity);
    expected += std::string(stamp) + c.name + ":dir/file.cc(42)]  #text\n\n";
  }
  EXPECT_EQ(ReadFile(path_), expected);
}

TEST_F(LoggingTest, LinesOfManyThreadsStayWhole) {
  constexpr int kThreads = 4;
  constexpr int kLines = 200;
  const std::string padding(5000, 'x');
  {
    std::vector<std::unique_ptr<base::SimpleThread>> threads;
    for (int i = 0; i < kThreads; ++i) {
      const auto log = [&padding, i] {
        for (int line = 0; line < kLines; ++line) {
          Log(std::to_string(i) + "," + std::to_string(line) + padding);
        }
      };
      threads.push_back(std::make_unique<TestThread<decltype(log)>>(log));
    }
  }
  std::ifstream stream(path_);
  std::set<std::string> texts;
  for (std::string line; std::getline(stream, line);) {
    texts.insert(line.substr(line.find(' ') + 1));
  }
  EXPECT_EQ(texts.size(), static_cast<size_t>(kThreads * kLines));
  for (const std::string& text : texts) {
    EXPECT_EQ(text.substr(text.find('x')), padding);
  }
}

TEST_F(LoggingTest, OpensTheFileAnewAndKeepsItWhenItCannot) {
  Log("one");
  std::filesystem::rename(path_, path_ + ".1");
  EXPECT_TRUE(logging::SetLogFile(path_));
  EXPECT_FALSE(logging::SetLogFile(folder_.File("no/such/folder")));
  Log("two");
  EXPECT_NE(ReadFile(path_ + ".1").find("one\n"), std::string::npos);
  EXPECT_NE(ReadFile(path_).find("two\n"), std::string::npos);
}

TEST_F(LoggingTest, AHandlerTakesTheLinesItWants) {
  std::string seen;
  logging::SetLogMessageHandler(
      [&seen](int severity, const char* file, int line, size_t start, const std::string& text) {
        seen += std::to_string(severity) + file + std::to_string(line) + text.substr(start);
        return severity >= logging::LOG_ERROR;
      });
  Log("kept", logging::LOG_ERROR);
  Log("passed on");
  logging::SetLogMessageHandler({});
  Log("unseen");
  EXPECT_EQ(seen, "4dir/file.cc42kept\n2dir/file.cc42passed on\n");
  const std::string written = ReadFile(path_);
  EXPECT_EQ(written.find("kept"), std::string::npos);
  EXPECT_NE(written.find("passed on\n"), std::string::npos);
  EXPECT_NE(written.find("unseen\n"), std::string::npos);
}

TEST_F(LoggingTest, AHandlerMayUseTheLog) {
  int depth = 0;
  logging::SetLogMessageHandler([&](int, const char*, int, size_t, const std::string&) {
    if (++depth == 1) Log("from the handler");
    logging::SetLogMessageHandler({});
    return false;
  });
  Log("from outside");
  EXPECT_EQ(depth, 2);
  EXPECT_NE(ReadFile(path_).find("from the handler\n"), std::string::npos);
}

TEST(Logging, StartsAtLevelZero) {
  EXPECT_EQ(logging::GetMinLogLevel(), 0);
  logging::SetMinLogLevel(logging::LOG_FATAL);
  EXPECT_EQ(logging::GetMinLogLevel(), 6);
  logging::SetMinLogLevel(0);
}

}  // namespace
