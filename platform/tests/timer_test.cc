#include "base/timer.h"

#include <gtest/gtest.h>

#include <atomic>

#include "base/message_loop.h"
#include "base/platform_thread.h"
#include "base/test_clock.h"
#include "tests/test_support.h"

namespace {

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
  const struct {
    TimeDelta advance;
    int runs;
  } kSteps[] = {{kPeriod - kInstant, 0},
                {kInstant, 1},
                {kPeriod - kInstant, 1},
                {kInstant, 2},
                {kTenPeriods, 3},
                {kPeriod - kInstant, 3},
                {kInstant, 4}};
  for (const bool is_repeating : {true, false}) {
    runs_ = 0;
    base::Timer timer(true, is_repeating);
    timer.Start(FROM_HERE, kPeriod, count_run_);
    EXPECT_TRUE(timer.IsRunning());
    for (const auto& step : kSteps) {
      ThenAdvance(step.advance, is_repeating ? step.runs : std::min(step.runs, 1));
    }
    RunSteps();
    EXPECT_EQ(timer.IsRunning(), is_repeating);
  }
}

TEST_F(TimerTest, ASlowTaskIsFollowedByOneRun) {
  base::Timer timer(true, true);
  timer.Start(FROM_HERE, kPeriod, [this] {
    if (++runs_ == 1) clock_.Advance(kTenPeriods);
  });
  ThenAdvance(kPeriod, 1);
  ThenAdvance(TimeDelta(), 2);
  ThenAdvance(kPeriod, 3);
  RunSteps();
}

TEST_F(TimerTest, ResetStartsARetainedTaskAnew) {
  for (const bool retain : {true, false}) {
    base::Timer timer(retain, true);
    timer.Start(FROM_HERE, kPeriod, count_run_);
    timer.Stop();
    ThenAdvance(kPeriod, 0);
    Then([&timer] { timer.Reset(); });
    ThenAdvance(kPeriod - kInstant, 0);
    Then([&timer] { timer.Reset(); });
    ThenAdvance(kInstant, 0);
    ThenAdvance(kPeriod, retain ? 1 : 0);
    RunSteps();
    runs_ = 0;
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

TEST_F(TimerTest, NeverRunsAfterQuit) {
  base::Timer timer(true, true);
  timer.Start(FROM_HERE, kPeriod, count_run_);
  Then([this] { loop_.Quit(); });
  ThenAdvance(kPeriod, 0);
  loop_.Run();
  EXPECT_EQ(runs_, 0);
}

TEST(TestClock, MovesTimersAndSleepersOfOtherThreads) {
  auto clock = std::make_unique<base::TestClock>();
  const base::Time start = base::Time::Now();
  std::atomic<int> runs{0};
  std::atomic<MessageLoop*> loop{nullptr};
  TestThread with_timer([&] {
    MessageLoop own;
    base::Timer timer(true, true);
    timer.Start(FROM_HERE, kPeriod, [&] { ++runs; });
    loop = &own;
    own.Run();
  });
  TestThread asleep([&] {
    base::PlatformThread::Sleep(kPeriod + kPeriod);
    runs += 10;
    // The real clock ends this one.
    base::PlatformThread::Sleep(kInstant);
  });
  for (const int expected : {0, 1}) {
    clock->WaitForSleepers(2);
    EXPECT_EQ(runs, expected);
    clock->Advance(kPeriod);
  }
  clock->WaitForSleepers(2);
  EXPECT_EQ(runs, 12);
  EXPECT_EQ(base::Time::Now() - start, kPeriod + kPeriod);
  clock.reset();
  loop.load()->PostTask(FROM_HERE, [] { MessageLoop::current()->Quit(); });
}

}  // namespace
