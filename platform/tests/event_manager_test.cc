#include "evt/event_manager.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <future>
#include <new>

#include "tests/test_support.h"

namespace {

constexpr size_t kPayloadSize = 1'000'000;

int g_flusher = 0;  // The thread that flushes.
std::atomic<bool> g_armed{false}, g_flushed{false}, g_dropped_first{false};

// Holds up the release of the payload until Flush has returned, or sleeps because it must wait.
void NoteRelease(void* block) {
  if (!g_armed || malloc_usable_size(block) < kPayloadSize || !g_armed.exchange(false)) return;
  while (!g_flushed && !IsAsleep(g_flusher)) sched_yield();
  g_dropped_first = !g_flushed;
}

}  // namespace

void* operator new(size_t size) {
  if (void* const block = std::malloc(size)) return block;
  throw std::bad_alloc();
}
void operator delete(void* block) noexcept {
  NoteRelease(block);
  std::free(block);
}
void operator delete(void* block, size_t /*size*/) noexcept { operator delete(block); }

namespace {

// Listeners write to a text without a lock: they share the bus's thread, and the test reads after
// Flush.
class EventManagerTest : public testing::Test {
 protected:
  ~EventManagerTest() override {
    for (const int number : numbers_) bus_->RemoveListener(number);
  }

  int Listen(int type, evt::EventManager::Listener listener) {
    numbers_.push_back(bus_->AddListener(type, std::move(listener)));
    return numbers_.back();
  }
  int ListenAs(const std::string& name, int type) {
    return Listen(type, [this, name](int heard, const Pickle& data) {
      std::string text;
      PickleIterator(data).ReadString(&text);
      heard_ += name + std::to_string(heard) + text + " ";
    });
  }

  evt::EventManager* const bus_ = evt::EventManager::GetInstance();
  std::vector<int> numbers_;
  std::string heard_;
};

// The scenarios create and refuse the eight that there are.
TEST_F(EventManagerTest, KnowsNoOtherTypes) {
  for (const int type : {-1, 0, 9}) EXPECT_EQ(bus_->CreateEvent(type), nullptr) << type;
}

TEST_F(EventManagerTest, DeliversInTheOrderOfPublishing) {
  Publish(1, "early");
  ListenAs("a", 1);
  ListenAs("b", 2);
  ListenAs("c", 1);
  for (const int type : {1, 3, 2, 1}) Publish(type, std::string(numbers_.size(), 'x'));
  bus_->Flush();
  EXPECT_EQ(heard_, "a1xxx c1xxx b2xxx a1xxx c1xxx ");
}

TEST_F(EventManagerTest, AListenerMayCallTheBus) {
  const auto bound = std::make_shared<int>(0);
  int self = 0;
  int victim = 0;
  self = Listen(1, [&, bound](int, const Pickle&) {
    heard_ += "self ";
    for (const int number : {victim, self, self}) bus_->RemoveListener(number);
    bus_->Flush();
    ListenAs("new", 1);
    Publish(1, "!");
  });
  victim = ListenAs("victim", 1);
  ListenAs("last", 1);
  Publish(1, "");
  bus_->Flush();
  bus_->Flush();
  EXPECT_EQ(heard_, "self last1 last1! new1! ");
  EXPECT_EQ(bound.use_count(), 1);
}

TEST_F(EventManagerTest, RemoveWaitsForTheRunningCall) {
  auto bound = std::make_shared<bool>(false);
  const std::weak_ptr<bool> life = bound;
  std::promise<void> entered;
  std::promise<void> go_on;
  const int number = Listen(5, [&, bound](int, const Pickle&) {
    entered.set_value();
    go_on.get_future().wait();
    heard_ += "ran ";
  });
  bound.reset();
  Publish(5, "");
  entered.get_future().wait();
  auto removed = std::async(std::launch::async, [&] {
    bus_->RemoveListener(number);
    return heard_ == "ran " && life.expired();
  });
  go_on.set_value();
  EXPECT_TRUE(removed.get());
  Publish(5, "");
  bus_->Flush();
  EXPECT_EQ(heard_, "ran ");
}

// Seen from the release of its memory.
TEST_F(EventManagerTest, DropsAPayloadBeforeFlushReturns) {
  g_flusher = gettid();
  std::promise<void> released;
  Listen(1, [&](int, const Pickle&) { released.get_future().wait(); });
  Publish(1, std::string(kPayloadSize, 'x'));
  g_armed = true;
  released.set_value();
  bus_->Flush();
  g_flushed = true;
  EXPECT_TRUE(g_dropped_first);
}

}  // namespace
