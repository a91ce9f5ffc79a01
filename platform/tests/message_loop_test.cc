#include "base/message_loop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

#include "base/test_clock.h"
#include "base/timer.h"
#include "tests/test_support.h"

namespace {

TEST(MessageLoop, RunsTasksInOrderUntilTheQueueOfQuitIsDone) {
  EXPECT_EQ(MessageLoop::current(), nullptr);
  const auto bound = std::make_shared<std::string>();
  {
    MessageLoop loop;
    EXPECT_EQ(MessageLoop::current(), &loop);
    const auto add = [bound](const std::string& text) { *bound += text; };
    loop.Quit();  // Outside Run: nothing.
    loop.PostTask(FROM_HERE, base::Bind(add, "a"));
    loop.PostTask(FROM_HERE, [&] {
      loop.Quit();
      loop.Quit();
      loop.PostTask(FROM_HERE, base::Bind(add, "late"));
    });
    loop.PostTask(FROM_HERE, base::Bind(add, "b"));
    loop.Run();
    EXPECT_EQ(*bound, "ab");
    loop.PostTask(FROM_HERE, base::Bind(&MessageLoop::Quit, base::Unretained(&loop)));
    loop.Run();
    loop.PostTask(FROM_HERE, base::Bind(add, "never"));
  }
  EXPECT_EQ(*bound, "ablate");
  EXPECT_EQ(bound.use_count(), 1);
  EXPECT_EQ(MessageLoop::current(), nullptr);
}

using base::TimeDelta;

const TimeDelta kInstant = TimeDelta::FromMicroseconds(1);
const TimeDelta kPeriod = TimeDelta::FromSeconds(60);
const TimeDelta kTenPeriods = TimeDelta::FromSeconds(600);

// A loop whose tasks are the steps of a test. Due timers run between two steps.
class TimerTest : public testing::Test {
 protected:
  void Then(base::Closure step) { loop_.PostTask(FROM_HERE, std::move(step)); }
  void ThenAdvance(TimeDelta delta, int expected_runs) {
    Then([this, delta] { clock_.Advance(delta); });
    Then([this, expected_runs] { EXPECT_EQ(runs_, expected_runs); });
  }
  void RunSteps() {
    Then([this] { loop_.Quit(); });
    loop_.Run();
  }

  base::TestClock clock_;
  MessageLoop loop_;
  int runs_ = 0;
  const base::Closure count_run_ = [this] { ++runs_; };
};

TEST_F(TimerTest, RunsByTheClock) {
  for (const bool is_repeating : {true, false}) {
    runs_ = 0;
    base::Timer timer(is_repeating, is_repeating);
    timer.Start(FROM_HERE, kPeriod, count_run_);
    EXPECT_TRUE(timer.IsRunning());
    const auto expected = [=](int runs) { return is_repeating ? runs : std::min(runs, 1); };
    for (const int runs : {1, 2, 4}) {
      if (runs == 4) ThenAdvance(kTenPeriods, expected(3));
      ThenAdvance(kPeriod - kInstant, expected(runs - 1));
      ThenAdvance(kInstant, expected(runs));
    }
    RunSteps();
    timer.Reset();  // Without its task it stays where it is.
    EXPECT_EQ(timer.IsRunning(), is_repeating);
  }
}

TEST_F(TimerTest, ASlowTaskIsFollowedByOneRunAndNoneAfterQuit) {
  base::Timer timer(true, true);
  timer.Start(FROM_HERE, kPeriod, [this] {
    if (++runs_ == 1) clock_.Advance(kTenPeriods);
  });
  ThenAdvance(kPeriod, 1);
  ThenAdvance(TimeDelta(), 2);
  ThenAdvance(kPeriod, 3);
  Then([this] { loop_.Quit(); });
  ThenAdvance(kPeriod, 3);
  loop_.Run();
  EXPECT_EQ(runs_, 3);
}

TEST_F(TimerTest, ResetStartsARetainedTaskAnew) {
  for (const bool retain : {true, false}) {
    runs_ = 0;
    base::Timer timer(retain, true);
    const auto then_reset = [&] { Then([&timer] { timer.Reset(); }); };
    timer.Start(FROM_HERE, kPeriod, count_run_);
    timer.Stop();
    ThenAdvance(kPeriod, 0);
    then_reset();
    ThenAdvance(kPeriod - kInstant, 0);
    then_reset();
    ThenAdvance(kInstant, 0);
    ThenAdvance(kPeriod, retain ? 1 : 0);
    RunSteps();
  }
}

TEST_F(TimerTest, TheTaskMayRestartOrDestroyIt) {
  auto timer = std::make_unique<base::Timer>(false, true);
  timer->Start(FROM_HERE, kPeriod, [&] {
    ++runs_;
    timer->Start(FROM_HERE, kPeriod, [&] {
      ++runs_;
      timer.reset();
    });
  });
  for (const int runs : {1, 2, 2}) ThenAdvance(kPeriod, runs);
  RunSteps();
}

}  // namespace
