#include "tests/faults/memory_faults.h"

#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <iterator>
#include <mutex>

// The C library's own.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
void __libc_free(void* memory);
}

namespace faults {
namespace {

thread_local Side t_side = Side::kNone;
std::atomic<Side> g_side{Side::kNone};
std::atomic<int> g_left{0};
std::atomic<bool> g_lasting{false};

std::mutex g_mutex;
void* g_held[1 << 16];
std::atomic<int> g_held_count{0};

bool IsWatched() { return t_side != Side::kNone && t_side == g_side; }

bool Fails() {
  if (!IsWatched()) return false;
  const int left = --g_left;
  return left == 0 || (left < 0 && g_lasting);
}

void* Hold(void* memory) {
  if (memory == nullptr || !IsWatched()) return memory;
  const std::lock_guard<std::mutex> guard(g_mutex);
  if (g_held_count == std::ssize(g_held)) std::abort();
  g_held[g_held_count++] = memory;
  return memory;
}

void LetGo(void* memory) {
  if (g_held_count == 0) return;
  const std::lock_guard<std::mutex> guard(g_mutex);
  void** const end = g_held + g_held_count;
  void** const found = std::find(g_held, end, memory);
  if (found != end) *found = g_held[--g_held_count];
}

void* Refuse() {
  errno = ENOMEM;
  return nullptr;
}

struct Start {
  void* (*run)(void*);
  void* argument;
};

void* RunStarted(void* data) {
  const Start start = *static_cast<Start*>(data);
  __libc_free(data);
  t_side = Side::kStarted;
  return start.run(start.argument);
}

}  // namespace

void UseMemoryAs(Side side) { t_side = side; }

void StartMemoryFault(Side side, int nth, bool lasting) {
  g_left = nth;
  g_lasting = lasting;
  g_side = side;
}

bool EndMemoryFault() {
  g_side = Side::kNone;
  return g_left <= 0;
}

int TakeHeldAllocations() { return g_held_count.exchange(0); }

MemoryIsBack::MemoryIsBack() : before_(t_side) { t_side = Side::kNone; }
MemoryIsBack::~MemoryIsBack() { t_side = before_; }

}  // namespace faults

extern "C" {

void* malloc(size_t size) {
  return faults::Fails() ? faults::Refuse() : faults::Hold(__libc_malloc(size));
}

void* calloc(size_t count, size_t size) {
  return faults::Fails() ? faults::Refuse() : faults::Hold(__libc_calloc(count, size));
}

void* realloc(void* memory, size_t size) {
  if (size != 0 && faults::Fails()) return faults::Refuse();
  faults::LetGo(memory);
  return faults::Hold(__libc_realloc(memory, size));
}

void free(void* memory) {
  faults::LetGo(memory);
  __libc_free(memory);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                   void* argument) {
  using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static const auto real = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
  if (faults::Fails()) return EAGAIN;
  if (faults::t_side == faults::Side::kNone) return real(thread, attributes, run, argument);
  // The C library keeps what it takes for a thread and gives it to the next one.
  const faults::MemoryIsBack back;
  auto* const start = static_cast<faults::Start*>(__libc_malloc(sizeof(faults::Start)));
  *start = {run, argument};
  return real(thread, attributes, &faults::RunStarted, start);
}

}  // extern "C"
