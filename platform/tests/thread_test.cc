#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>

#include "base/clock.h"
#include "base/platform_thread.h"
#include "base/test_clock.h"
#include "tests/test_support.h"

namespace {

using base::TimeDelta;

TEST(SimpleThread, IsNamedToTheKernel) {
  const struct {
    const char* name;
    const char* kernel_name;
  } kCases[] = {{"Short", "Short\n"}, {"AccountCheckThread", "AccountCheckThr\n"}};
  for (const auto& c : kCases) {
    std::string kernel_name;
    {
      TestThread thread([&] { kernel_name = ReadFile("/proc/thread-self/comm"); }, c.name);
    }
    EXPECT_EQ(kernel_name, c.kernel_name);
  }
}

TEST(PlatformThread, SleepsByTheClockInPlace) {
  base::TestClock clock;
  std::atomic<int> awake{0};
  const auto sleep = [&](int seconds) {
    return [&awake, seconds] {
      base::PlatformThread::Sleep(TimeDelta::FromSeconds(seconds));
      ++awake;
    };
  };
  TestThread second(sleep(2));
  clock.WaitForSleepers(1);
  {
    TestThread first(sleep(1));
    clock.WaitForSleepers(2);
    clock.Advance(TimeDelta::FromSeconds(1));
    clock.WaitForSleepers(1);
  }
  EXPECT_EQ(awake, 1);
  clock.Advance(TimeDelta::FromSeconds(1));
}

TEST(PlatformThread, SleepsByTheRealClock) {
  const auto start = std::chrono::steady_clock::now();
  base::PlatformThread::Sleep(TimeDelta::FromMilliseconds(20));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
}

TEST(TestClock, GivesItsSleepersBackToTheRealClock) {
  auto clock = std::make_unique<base::TestClock>();
  TestThread thread([] { base::PlatformThread::Sleep(TimeDelta::FromMilliseconds(1)); });
  clock->WaitForSleepers(1);
  clock.reset();
}

template <typename LockType, typename Holder, bool (LockType::*kTry)(), void (LockType::*kGive)()>
void ExpectExclusion() NO_THREAD_SAFETY_ANALYSIS {
  LockType lock;
  bool taken = true;
  const auto try_elsewhere = [&]() NO_THREAD_SAFETY_ANALYSIS {
    taken = (lock.*kTry)();
    if (taken) (lock.*kGive)();
  };
  {
    Holder hold(lock);
    TestThread thread(try_elsewhere);
  }
  EXPECT_FALSE(taken);
  { TestThread thread(try_elsewhere); }
  EXPECT_TRUE(taken);
}

TEST(Lock, KeepsOtherThreadsOut) {
  using base::internal::AutoLockImpl;
  using base::internal::LockImpl;
  ExpectExclusion<base::Lock, base::AutoLock, &base::Lock::Try, &base::Lock::Release>();
  ExpectExclusion<LockImpl, AutoLockImpl, &LockImpl::Try, &LockImpl::Unlock>();
}

}  // namespace
