#include "tests/faults/memory_faults.h"

#include <curl/curl.h>
#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>
#include <sqlite3.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <mutex>
#include <new>

namespace faults {
namespace {

thread_local Side t_side = Side::kNone;
std::atomic<Side> g_side{Side::kNone};
std::atomic<int> g_left{0};
std::atomic<bool> g_lasting{false};

// What was allocated while it was watched and is not freed yet.
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

void* LetGo(void* memory) {
  if (g_held_count == 0) return memory;
  const std::lock_guard<std::mutex> guard(g_mutex);
  void** const end = g_held + g_held_count;
  void** const found = std::find(g_held, end, memory);
  if (found != end) *found = g_held[--g_held_count];
  return memory;
}

void* Allocate(size_t size) { return Fails() ? nullptr : Hold(malloc(size)); }
void* Clear(size_t count, size_t size) { return Fails() ? nullptr : Hold(calloc(count, size)); }
void* Resize(void* memory, size_t size) {
  return Fails() ? nullptr : Hold(realloc(LetGo(memory), size));
}
char* Copy(const char* text) { return Fails() ? nullptr : static_cast<char*>(Hold(strdup(text))); }
void Release(void* memory) { free(LetGo(memory)); }

const int g_sqlite = [] {
  static const sqlite3_mem_methods kMethods = {
      [](int size) { return Allocate(static_cast<size_t>(size)); },
      Release,
      [](void* memory, int size) { return Resize(memory, static_cast<size_t>(size)); },
      [](void* memory) { return static_cast<int>(malloc_usable_size(memory)); },
      [](int size) { return (size + 7) & ~7; },
      [](void*) { return SQLITE_OK; },
      [](void*) {},
      nullptr};
  return sqlite3_config(SQLITE_CONFIG_MALLOC, &kMethods);
}();
const CURLcode g_curl =
    curl_global_init_mem(CURL_GLOBAL_DEFAULT, Allocate, Release, Resize, Copy, Clear);

struct Start {
  void* (*run)(void*);
  void* argument;
};

void* RunStarted(void* data) {
  const Start start = *static_cast<Start*>(data);
  free(data);
  t_side = Side::kStarted;
  return start.run(start.argument);
}

}  // namespace

void UseMemoryAs(Side side) { t_side = side; }

void UseNamedZone() { setenv("TZ", "UTC0", 1); }

void StartMemoryFault(Side side, int nth, bool lasting) {
  g_left = nth;
  g_lasting = lasting;
  g_side = side;
}

int EndMemoryFault() {
  g_side = Side::kNone;
  return std::max(-g_left, -1);
}

int TakeHeldAllocations() { return g_held_count.exchange(0); }

MemoryIsBack::MemoryIsBack() : before_(t_side) { t_side = Side::kNone; }
MemoryIsBack::~MemoryIsBack() { t_side = before_; }

}  // namespace faults

void* operator new(size_t size) {
  void* const memory = faults::Allocate(size == 0 ? 1 : size);
  return memory != nullptr ? memory : throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { faults::Release(memory); }
void operator delete(void* memory, size_t /*size*/) noexcept { faults::Release(memory); }

// The XML library leaks the element it is reading if an allocation fails.
extern "C" const char* __lsan_default_suppressions() { return "leak:libtinyxml\n"; }

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*run)(void*), void* argument) {
  using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static const auto real = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
  if (faults::Fails()) return EAGAIN;
  if (faults::t_side == faults::Side::kNone) return real(thread, attributes, run, argument);
  // The C library keeps what it takes for a thread and gives it to the next one.
  const faults::MemoryIsBack back;
  auto* const start = static_cast<faults::Start*>(malloc(sizeof(faults::Start)));
  *start = {run, argument};
  return real(thread, attributes, &faults::RunStarted, start);
}
