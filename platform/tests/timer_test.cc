#include "base/timer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <vector>

#include "base/message_loop.h"
#include "base/test_clock.h"
#include "tests/test_support.h"

namespace {

using base::TimeDelta;

constexpr int kPeriodSeconds = 60;
const TimeDelta kPeriod = TimeDelta::FromSeconds(kPeriodSeconds);

// A loop whose tasks are the steps of a test. Due timers run between two steps.
class TimerTest : public testing::Test {
 protected:
  void Then(base::Closure step) { loop_.PostTask(FROM_HERE, std::move(step)); }
  void ThenAdvance(TimeDelta delta) {
    Then([this, delta] { clock_.Advance(delta); });
  }
  void ThenExpectRuns(int runs) {
    Then([this, runs] { EXPECT_EQ(runs_, runs); });
  }
  void RunSteps() {
    Then([this] { loop_.Quit(); });
    loop_.Run();
  }
  base::Closure CountRun() {
    return [this] { ++runs_; };
  }

  base::TestClock clock_;
  MessageLoop loop_;
  int runs_ = 0;
};

TEST_F(TimerTest, RunsByTheClock) {
  const TimeDelta almost = kPeriod - TimeDelta::FromMicroseconds(1);
  const TimeDelta rest = TimeDelta::FromMicroseconds(1);
  const TimeDelta ten_periods = TimeDelta::FromSeconds(10 * kPeriodSeconds);
  const struct {
    TimeDelta advance;
    int repeating_runs;
  } kSteps[] = {
      {almost, 0}, {rest, 1}, {almost, 1}, {rest, 2}, {ten_periods, 3}, {almost, 3}, {rest, 4},
  };
  for (const bool is_repeating : {true, false}) {
    runs_ = 0;
    base::Timer timer(true, is_repeating);
    timer.Start(FROM_HERE, kPeriod, CountRun());
    EXPECT_TRUE(timer.IsRunning());
    for (const auto& step : kSteps) {
      ThenAdvance(step.advance);
      ThenExpectRuns(is_repeating ? step.repeating_runs : std::min(step.repeating_runs, 1));
    }
    RunSteps();
    EXPECT_EQ(timer.IsRunning(), is_repeating);
  }
}

TEST_F(TimerTest, ASlowTaskIsFollowedByOneRun) {
  base::Timer timer(true, true);
  timer.Start(FROM_HERE, kPeriod, [this] {
    if (++runs_ == 1) clock_.Advance(TimeDelta::FromSeconds(10 * kPeriodSeconds));
  });
  ThenAdvance(kPeriod);
  Then([] {});
  ThenExpectRuns(2);
  ThenAdvance(kPeriod);
  ThenExpectRuns(3);
  RunSteps();
}

TEST_F(TimerTest, StopAndResetGoByTheRetainedTask) {
  for (const bool retain : {true, false}) {
    runs_ = 0;
    base::Timer timer(retain, true);
    timer.Reset();  // No task yet.
    EXPECT_FALSE(timer.IsRunning());
    timer.Start(FROM_HERE, kPeriod, CountRun());
    timer.Stop();
    EXPECT_FALSE(timer.IsRunning());
    ThenAdvance(kPeriod);
    ThenExpectRuns(0);
    Then([&timer] { timer.Reset(); });
    ThenAdvance(kPeriod - TimeDelta::FromSeconds(1));
    Then([&timer] { timer.Reset(); });
    ThenAdvance(TimeDelta::FromSeconds(1));
    ThenExpectRuns(0);
    ThenAdvance(kPeriod);
    ThenExpectRuns(retain ? 1 : 0);
    RunSteps();
  }
}

TEST_F(TimerTest, TheTaskMayStopRestartOrDestroyIt) {
  auto timer = std::make_unique<base::Timer>(false, true);
  timer->Start(FROM_HERE, kPeriod, [&] {
    ++runs_;
    timer->Start(FROM_HERE, kPeriod, [&] {
      ++runs_;
      timer.reset();
    });
  });
  for (const int runs : {1, 2, 2}) {
    ThenAdvance(kPeriod);
    ThenExpectRuns(runs);
  }
  RunSteps();
  EXPECT_EQ(timer, nullptr);
}

TEST_F(TimerTest, NeverRunsAfterQuit) {
  base::Timer timer(true, true);
  timer.Start(FROM_HERE, kPeriod, CountRun());
  Then([this] {
    loop_.Quit();
    clock_.Advance(kPeriod);
  });
  Then([] {});
  ThenExpectRuns(0);
  loop_.Run();
  EXPECT_EQ(runs_, 0);
}

TEST(Timer, MayOutliveItsLoopOrHaveNone) {
  base::Timer timer(true, true);
  timer.Start(FROM_HERE, kPeriod, [] {});
  EXPECT_FALSE(timer.IsRunning());
  {
    MessageLoop loop;
    timer.Reset();
    EXPECT_TRUE(timer.IsRunning());
  }
  EXPECT_FALSE(timer.IsRunning());
  timer.Stop();
}

TEST(TestClock, MovesTheTimersOfOtherThreads) {
  base::TestClock clock;
  std::atomic<int> runs{0};
  std::atomic<MessageLoop*> loop{nullptr};
  TestThread thread([&] {
    MessageLoop own;
    base::Timer timer(true, true);
    timer.Start(FROM_HERE, kPeriod, [&] { ++runs; });
    loop = &own;
    own.Run();
  });
  const base::Time start = base::Time::Now();
  for (int i = 0; i < 3; ++i) {
    clock.WaitForSleepers(1);
    EXPECT_EQ(runs, i);
    clock.Advance(kPeriod);
  }
  clock.WaitForSleepers(1);
  EXPECT_EQ(runs, 3);
  EXPECT_EQ(base::Time::Now() - start, TimeDelta::FromSeconds(3 * kPeriodSeconds));
  loop.load()->PostTask(FROM_HERE, [] { MessageLoop::current()->Quit(); });
}

}  // namespace
