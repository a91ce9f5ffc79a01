#include "base/message_loop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>

#include "tests/test_support.h"

namespace {

TEST(MessageLoop, RunsTasksInOrderAlsoThoseOfBeforeRun) {
  EXPECT_EQ(MessageLoop::current(), nullptr);
  MessageLoop loop;
  EXPECT_EQ(MessageLoop::current(), &loop);
  std::string order;
  const auto add = [&order](const std::string& text) { order += text; };
  for (const char* text : {"a", "b", "c"}) loop.PostTask(FROM_HERE, base::Bind(add, text));
  loop.PostTask(FROM_HERE, [&] {
    loop.PostTask(FROM_HERE, base::Bind(add, "e"));
    loop.PostTask(FROM_HERE, base::Bind(&MessageLoop::Quit, base::Unretained(&loop)));
    add("d");
  });
  loop.Run();
  EXPECT_EQ(order, "abcde");
}

TEST(MessageLoop, QuitLetsTheQueuedTasksRunAndNoOthers) {
  std::string order;
  MessageLoop loop;
  loop.Quit();  // Outside Run: nothing.
  loop.PostTask(FROM_HERE, [&] {
    loop.Quit();
    loop.Quit();
    loop.PostTask(FROM_HERE, [&] { order += "late "; });
  });
  loop.PostTask(FROM_HERE, [&] { order += "queued "; });
  loop.Run();
  EXPECT_EQ(order, "queued ");
  loop.PostTask(FROM_HERE, [&] { loop.Quit(); });
  loop.Run();
  EXPECT_EQ(order, "queued late ");
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

TEST(MessageLoop, TakesTasksOfManyThreads) {
  constexpr int kThreads = 4;
  constexpr int kTasks = 500;
  MessageLoop loop;
  int runs = 0;  // Without a lock: tasks run on this thread alone.
  const auto post = [&] {
    for (int i = 0; i < kTasks; ++i) {
      loop.PostTask(FROM_HERE, [&] {
        if (++runs == kThreads * kTasks) loop.Quit();
      });
    }
  };
  std::vector<std::unique_ptr<TestThread<decltype(post)>>> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.push_back(std::make_unique<TestThread<decltype(post)>>(post));
  }
  loop.Run();
  EXPECT_EQ(runs, kThreads * kTasks);
}

}  // namespace
