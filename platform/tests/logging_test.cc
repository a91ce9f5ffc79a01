#include "base/logging.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <thread>

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
  // How Log's line stands in the file; the clock stands still.
  static std::string Line(const std::string& text, const std::string& name = "INFO") {
    const auto now = static_cast<time_t>(base::Time::Now().ToDoubleT());
    char stamp[80];
    strftime(stamp, sizeof(stamp), "[%m%d/%H%M%S:", localtime(&now));
    return stamp + name + ":dir/file.cc(42)] " + text + "\n";
  }

  const base::TestClock clock_;
  const TestFolder folder_;
  const std::string path_ = folder_.File("log");
};

TEST_F(LoggingTest, WritesToTheFileUntilItCanOpenAnother) {
  const std::pair<int, const char*> kCases[] = {
      {-1, "VERBOSE"}, {0, "DETAILED_INFO"}, {1, "INTERNAL_INFO"}, {2, "INFO"},     {3, "WARNING"},
      {4, "ERROR"},    {5, "ERROR_REPORT"},  {6, "FATAL"},         {-9, "VERBOSE"}, {9, "FATAL"}};
  std::string expected;
  for (const auto& [severity, name] : kCases) {
    Log(" #text\n", severity);
    expected += Line(" #text\n", name);
  }
  std::filesystem::rename(path_, path_ + ".1");
  EXPECT_TRUE(logging::SetLogFile(path_));
  EXPECT_FALSE(logging::SetLogFile(folder_.File("no/such/folder")));
  Log("two");
  EXPECT_EQ(ReadFile(path_ + ".1"), expected);
  EXPECT_EQ(ReadFile(path_), Line("two"));
}

TEST_F(LoggingTest, LinesThatAFullDiskDoesNotTakeGoToStandardError) {
  ASSERT_TRUE(logging::SetLogFile("/dev/full"));
  testing::internal::CaptureStderr();
  Log("one");
  Log("two");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "The log file cannot be written (No space left on device); until it can, its lines are "
            "these:\n" +
                Line("one") + Line("two"));
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
  EXPECT_EQ(ReadFile(path_), Line("passed on") + Line("from the handler") +
                                 Line("last", "WARNING") + Line("unseen"));
}

TEST_F(LoggingTest, AHandlerHasEndedWhenItsReplacementReturns) {
  const pid_t replacer = gettid();
  std::atomic<bool> begun{false}, replaced{false}, ended_first{false};
  logging::SetLogMessageHandler([&](int, const char*, int, size_t, const std::string&) {
    begun = true;
    while (!replaced && !IsAsleep(replacer)) sched_yield();
    return ended_first = !replaced;
  });
  std::thread logger([] { Log("held up"); });
  while (!begun) sched_yield();  // A sleep here would look like one in the replacement.
  logging::SetLogMessageHandler({});
  replaced = true;
  logger.join();
  EXPECT_TRUE(ended_first);
}

}  // namespace
