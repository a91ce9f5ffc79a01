// For programs under test, by LD_PRELOAD: the clock that counts while the machine sleeps
// (CLOCK_BOOTTIME) as the test moves it. The file that QORN_STEPPED_CLOCK names holds two 64-bit
// numbers: the seconds by which the clock is ahead, which the test writes, and the same number as
// soon as a thread has seen it and waits, with nothing due any more.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <ctime>

namespace {

struct Steps {
  std::atomic<int64_t> ahead;
  std::atomic<int64_t> settled;
};

Steps* Map() {
  const char* const file = std::getenv("QORN_STEPPED_CLOCK");
  const int fd = file == nullptr ? -1 : open(file, O_RDWR | O_CLOEXEC);
  if (fd < 0) std::abort();
  void* const steps = mmap(nullptr, sizeof(Steps), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
  if (steps == MAP_FAILED) std::abort();
  close(fd);
  return static_cast<Steps*>(steps);
}

Steps* const g_steps = Map();
// What the thread saw first since it last set a timer: it has seen no less in all that it did.
thread_local int64_t t_seen = -1;

}  // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
  const long result = syscall(SYS_clock_gettime, clock, time);
  if (clock == CLOCK_BOOTTIME) {
    const int64_t ahead = g_steps->ahead;
    if (t_seen < 0) t_seen = ahead;
    time->tv_sec += ahead;
  }
  return static_cast<int>(result);
}

// Wakes soon in any case, to look whether the clock was moved. A caller that looks at the clock
// before it believes a timer does not notice.
extern "C" int timerfd_settime(int fd, int /*flags*/, const itimerspec* when,
                               itimerspec* /*before*/) noexcept {
  constexpr long kSoon = 10'000'000;  // nanoseconds
  timespec now{};
  syscall(SYS_clock_gettime, CLOCK_BOOTTIME, &now);
  const bool is_due = when->it_value.tv_sec <= now.tv_sec + t_seen;
  if (!is_due) g_steps->settled = t_seen;
  t_seen = -1;
  const itimerspec soon{.it_interval = {},
                        .it_value = {.tv_sec = 0, .tv_nsec = is_due ? 1 : kSoon}};
  return static_cast<int>(syscall(SYS_timerfd_settime, fd, 0, &soon, nullptr));
}
