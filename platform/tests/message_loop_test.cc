#include "base/message_loop.h"

#include <gtest/gtest.h>

#include <atomic>

#include "tests/test_support.h"

namespace {

TEST(MessageLoop, RunsTasksInOrderUntilTheQueueOfQuitIsDone) {
  EXPECT_EQ(MessageLoop::current(), nullptr);
  MessageLoop loop;
  EXPECT_EQ(MessageLoop::current(), &loop);
  std::string order;
  const auto add = [&order](const std::string& text) { order += text; };
  loop.Quit();  // Outside Run: nothing.
  loop.PostTask(FROM_HERE, base::Bind(add, "a"));
  loop.PostTask(FROM_HERE, [&] {
    loop.Quit();
    loop.Quit();
    loop.PostTask(FROM_HERE, base::Bind(add, "late"));
  });
  loop.PostTask(FROM_HERE, base::Bind(add, "b"));
  loop.Run();
  EXPECT_EQ(order, "ab");
  loop.PostTask(FROM_HERE, base::Bind(&MessageLoop::Quit, base::Unretained(&loop)));
  loop.Run();
  EXPECT_EQ(order, "ablate");
}

TEST(MessageLoop, DestroysWhatIsLeftWithoutRunningIt) {
  auto bound = std::make_shared<int>(0);
  {
    MessageLoop loop;
    loop.PostTask(FROM_HERE, [bound] { ++*bound; });
  }
  EXPECT_EQ(bound.use_count(), 1);
  EXPECT_EQ(*bound, 0);
  EXPECT_EQ(MessageLoop::current(), nullptr);
}

// The loop's thread may be through with the loop before PostTask has returned.
TEST(MessageLoop, MayEndWhileItsLastTaskIsPosted) {
  for (int round = 0; round < 300; ++round) {
    std::atomic<MessageLoop*> loop{nullptr};
    TestThread thread([&loop] {
      MessageLoop own;
      loop = &own;
      loop.notify_one();
      own.Run();
    });
    loop.wait(nullptr);
    loop.load()->PostTask(FROM_HERE, [] { MessageLoop::current()->Quit(); });
  }
}

TEST(SimpleThread, IsNamedToTheKernel) {
  std::string name;
  {
    TestThread thread([&] { name = ReadFile("/proc/thread-self/comm"); }, "AccountCheckThread");
  }
  EXPECT_EQ(name, "AccountCheckThr\n");
}

}  // namespace
