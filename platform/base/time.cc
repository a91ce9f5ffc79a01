#include "base/time.h"

#include <cstdlib>
#include <ctime>
#include <limits>

#include "base/clock.h"
#include "base/lock.h"

namespace base {

namespace {

constexpr int64_t kMicrosecondsPerSecond = 1'000'000;
constexpr int64_t kMicrosecondsPerMillisecond = 1'000;

int64_t RangeEnd(bool negative) {
  return negative ? std::numeric_limits<int64_t>::min() : std::numeric_limits<int64_t>::max();
}

int64_t SaturatedAdd(int64_t a, int64_t b) {
  int64_t sum = 0;
  return __builtin_add_overflow(a, b, &sum) ? RangeEnd(b < 0) : sum;
}

int64_t SaturatedSubtract(int64_t a, int64_t b) {
  int64_t difference = 0;
  return __builtin_sub_overflow(a, b, &difference) ? RangeEnd(b > 0) : difference;
}

// `factor` is positive.
int64_t SaturatedMultiply(int64_t value, int64_t factor) {
  int64_t product = 0;
  return __builtin_mul_overflow(value, factor, &product) ? RangeEnd(value < 0) : product;
}

void Explode(int64_t microseconds, tm* (*take_apart)(const time_t*, tm*),
             Time::Exploded* exploded) {
  time_t seconds = microseconds / kMicrosecondsPerSecond;
  int64_t rest = microseconds % kMicrosecondsPerSecond;
  if (rest < 0) {  // Division truncates towards zero, but a time before 1970 must round down.
    rest += kMicrosecondsPerSecond;
    --seconds;
  }
  tm parts{};
  take_apart(&seconds, &parts);
  exploded->year = parts.tm_year + 1900;
  exploded->month = parts.tm_mon + 1;
  exploded->day_of_week = parts.tm_wday;
  exploded->day_of_month = parts.tm_mday;
  exploded->hour = parts.tm_hour;
  exploded->minute = parts.tm_min;
  exploded->second = parts.tm_sec;
  exploded->millisecond = static_cast<int>(rest / kMicrosecondsPerMillisecond);
}

// Calls tzset, but at most once for each tick of the kernel's clock: without TZ it checks the
// system's zone file each time. One thread at a time.
void FollowZone() {
  static timespec asked{};
  timespec now{};
  if (std::getenv("TZ") == nullptr) {
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    if (now.tv_sec == asked.tv_sec && now.tv_nsec == asked.tv_nsec) return;
  }
  asked = now;
  tzset();
}

}  // namespace

TimeDelta TimeDelta::FromSeconds(int64_t seconds) {
  return TimeDelta(SaturatedMultiply(seconds, kMicrosecondsPerSecond));
}

TimeDelta TimeDelta::FromMilliseconds(int64_t milliseconds) {
  return TimeDelta(SaturatedMultiply(milliseconds, kMicrosecondsPerMillisecond));
}

TimeDelta TimeDelta::operator+(TimeDelta other) const {
  return TimeDelta(SaturatedAdd(microseconds_, other.microseconds_));
}

TimeDelta TimeDelta::operator-(TimeDelta other) const {
  return TimeDelta(SaturatedSubtract(microseconds_, other.microseconds_));
}

Time Time::Now() { return Clock::Get()->Now(); }

double Time::ToDoubleT() const {
  return static_cast<double>(since_epoch_.InMicroseconds()) / kMicrosecondsPerSecond;
}

Time Time::operator+(TimeDelta delta) const {
  Time sum;
  sum.since_epoch_ = since_epoch_ + delta;
  return sum;
}

TimeDelta Time::operator-(Time other) const { return since_epoch_ - other.since_epoch_; }

void Time::LocalExplode(Exploded* exploded) const {
  // localtime_r alone may use the zone of an earlier call. The lock makes the two calls one step.
  static Lock* const lock = new Lock;
  AutoLock hold(*lock);
  FollowZone();
  Explode(since_epoch_.InMicroseconds(), localtime_r, exploded);
}

void Time::UTCExplode(Exploded* exploded) const {
  Explode(since_epoch_.InMicroseconds(), gmtime_r, exploded);
}

}  // namespace base
