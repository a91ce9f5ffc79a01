#ifndef QORN_TESTS_SCENARIO_RUNNER_H_
#define QORN_TESTS_SCENARIO_RUNNER_H_

#include <sqlite3.h>

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/test_clock.h"
#include "core_fw/account/src/account_manager_impl.h"
#include "core_fw/account/tests/test_support.h"
#include "devcloud/http/recorded_request.h"
#include "gateway/console/commands.h"
#include "gateway/console/variables.h"

namespace scenarios {

struct Line {
  int number;          // in the file, from 1
  std::size_t indent;  // leading blanks
  std::string text;    // without them
};

struct Scenario {
  std::string file, suite, name;
  std::vector<Line> lines;
};

using Words = std::vector<std::string>;

[[noreturn]] void Fail(const std::string& found);
// The text up to a blank, and what follows it.
std::pair<std::string, std::string> CutFirst(const std::string& text);
// Every `from` in the text replaced.
std::string Replace(std::string text, const std::string& from, const std::string& to);
// "4 SignOut SignOutEndInvalid Session ID" as it is in the log.
std::string LogLine(const std::string& text);
// The first and the last line of an operation.
std::pair<std::string, std::string> StartAndEnd(const std::string& function, int code);
// Takes the first of `found`, which must be `expected`.
void TakeNext(std::deque<std::string>* found, const std::string& expected);

// Runs one scenario on a service, a cloud, a folder and a clock of its own; README.md describes
// the lines. The first line that fails ends it.
class ScenarioRunner : public account::AccountTest {
 public:
  // How a started service is called; directly if there is none.
  using Connect = std::shared_ptr<AccountManager> (*)(AccountManager*);

  explicit ScenarioRunner(Scenario scenario, Connect connect = nullptr);
  ~ScenarioRunner() override;

 private:
  using Lines = std::vector<Line>::const_iterator;

  // The number of words that follow a directive, + kOrMore where it is only the least, or how the
  // rest of the line is read instead: kText is one word as it stands, kNameAndText a word and what
  // follows it.
  enum Form { kText = -1, kNameAndText = -2, kOrMore = 100 };
  using Run = std::function<void(const Words& words)>;
  struct Directive {
    bool is_check;
    int words;
    Run run;
  };

  // A check looks at what the step before it left.
  void Check(const std::string& name, int words, Run run) {
    directives_[name] = {true, words, run};
  }
  void Step(const std::string& name, int words, Run run) {
    directives_[name] = {false, words, run};
  }
  void AddChecks();
  void AddLife();
  void AddValues();
  void AddSurroundings();

  void TestBody() override;
  void RunLines(Lines begin, Lines end);
  void RunLine(const std::string& text);
  void RunOperation(const std::string& text);
  // Takes what a step wrote and published.
  void Collect();
  AccountManager& accounts() { return access_ == nullptr ? service_ : *access_; }
  // Ends a step: nothing may be left that no line has told.
  void Settle();
  void MoveClock(const std::string& seconds);

  // The words of a console line; %NAME is a variable's bytes.
  Words SplitWords(const std::string& text, int count) const;
  // The text as it is, with its variables replaced.
  std::string Text(const std::string& text) const;

  std::map<std::string, Directive> directives_;
  const Scenario scenario_;
  const Line* line_ = nullptr;  // The one that runs.
  base::TestClock clock_;
  account::EventCapture bus_;
  account::AccountManagerImpl service_;
  // With it, the log is not looked at: a caller on the bus does not see it, and adds lines to it.
  const Connect connect_;
  std::shared_ptr<AccountManager> access_;
  bool running_ = false;
  bool flag_ = false;  // What the flag of a sign-in holds before the call.
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> lock_{nullptr, sqlite3_close};
  int pauses_locked_ = 0;  // The lock is let go when it comes to 0.
  gateway::Variables variables_;

  // What the latest step left; the lines of a request count as rows.
  std::deque<std::string> lines_, events_, rows_;
  bool told_lines_ = false, told_events_ = false;
  std::map<std::string, Words> outputs_;
  std::set<std::string> written_;  // Outputs of a failure that no line has told.
  std::vector<devcloud::RecordedRequest> requests_;
};

// The accounts over a bus of their own: while what is returned lives, a service offers them on the
// bus and a client calls it. Only where the bus is built.
std::shared_ptr<AccountManager> MakeBusAccess(AccountManager* accounts);

}  // namespace scenarios

#endif  // QORN_TESTS_SCENARIO_RUNNER_H_
