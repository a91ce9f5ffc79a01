// What the account component's tests share: a temporary folder, a runtime with a configuration of
// the test's own, the log, the bus and a development cloud.
#ifndef QORN_CORE_FW_ACCOUNT_TESTS_TEST_SUPPORT_H_
#define QORN_CORE_FW_ACCOUNT_TESTS_TEST_SUPPORT_H_

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "devcloud/cloud.h"
#include "platform/tests/test_support.h"

namespace account {

// Keeps the log lines of the process instead of writing them. A line reads as its severity, a
// blank and the text, "4 #account#SignOut#  SignOutEndInvalid Session ID"; the source file stands
// between the two where it is not the component that writes.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();

  // All lines so far; the capture is empty then.
  std::vector<std::string> Take();
  // Runs on the thread that writes, before the line is kept.
  void OnLine(std::function<void(const std::string&)> action);

 private:
  std::mutex mutex_;
  std::vector<std::string> lines_;
  std::function<void(const std::string&)> action_;
};

// The account component's line: severity, function, text.
std::string Line(int severity, const std::string& function, const std::string& text);

// What the log calls a result code.
std::string Message(int code);

// Keeps every event of the bus as "NUMBER first|second|...".
class EventCapture {
 public:
  EventCapture();
  ~EventCapture();
  // What was published so far; the capture is empty then.
  std::vector<std::string> Take();

 private:
  std::mutex mutex_;
  std::vector<std::string> events_;
  std::vector<int> listeners_;
};

// How many entries a folder has, as "/proc/self/fd" has descriptors.
long CountEntries(const std::string& folder);
// Waits until the condition holds; false if it does not come to hold within 20 seconds.
bool WaitUntil(const std::function<bool()>& holds);
// Waits until the folder has at most `count` entries: the cloud may still be closing its side of a
// connection, the kernel may still list a thread that was joined.
bool WaitForEntries(const char* folder, long count);

// The built component, which a program that loads it must depend on.
std::string LibraryPath();

inline constexpr char kGatewayAddress[] = "AABBCC";

// A runtime without components and a cloud that its configuration names. Error lines that a test
// does not take fail it.
class AccountTest : public testing::Test {
 protected:
  AccountTest();
  ~AccountTest() override;

  // Ends a runtime that is there.
  void StartRuntime();
  std::string database_path() const { return folder_ + "/account.db"; }
  // Runs SQL on the database from outside and gives the rows, columns joined by "|".
  std::vector<std::string> Sql(const std::string& statement) const;

  const TestFolder test_folder_;
  const std::string folder_ = test_folder_.path();
  LogCapture log_;
  std::unique_ptr<devcloud::Cloud> cloud_;
  std::map<std::string, std::string> config_;  // Keys for StartRuntime; complete from the start.
};

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_TESTS_TEST_SUPPORT_H_
