// When the bus drops a payload, seen from the release of its memory.
#include <gtest/gtest.h>
#include <malloc.h>
#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <future>
#include <new>

#include "evt/event_manager.h"
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
  void* const block = std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept {
  NoteRelease(block);
  std::free(block);
}
void operator delete(void* block, size_t /*size*/) noexcept { operator delete(block); }

namespace {

TEST(EventPayload, IsDroppedBeforeFlushReturns) {
  g_flusher = gettid();
  evt::EventManager* const bus = evt::EventManager::GetInstance();
  std::promise<void> released;
  const int listener =
      bus->AddListener(1, [&](int, const Pickle&) { released.get_future().wait(); });
  Publish(1, std::string(kPayloadSize, 'x'));
  g_armed = true;
  released.set_value();
  bus->Flush();
  g_flushed = true;
  bus->RemoveListener(listener);
  EXPECT_TRUE(g_dropped_first);
}

}  // namespace
