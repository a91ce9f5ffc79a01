// Points in time and durations, as 64-bit microseconds. Both are plain values; arithmetic saturates
// at the limits of the range.
#ifndef QORN_PLATFORM_BASE_TIME_H_
#define QORN_PLATFORM_BASE_TIME_H_

#include <compare>
#include <cstdint>

namespace base {

class TimeDelta {
 public:
  constexpr TimeDelta() = default;

  static TimeDelta FromSeconds(int64_t seconds);
  static TimeDelta FromMilliseconds(int64_t milliseconds);
  static constexpr TimeDelta FromMicroseconds(int64_t microseconds) {
    return TimeDelta(microseconds);
  }

  constexpr int64_t InMicroseconds() const { return microseconds_; }

  TimeDelta operator+(TimeDelta other) const;
  TimeDelta operator-(TimeDelta other) const;
  constexpr auto operator<=>(const TimeDelta&) const = default;

 private:
  explicit constexpr TimeDelta(int64_t microseconds) : microseconds_(microseconds) {}

  int64_t microseconds_ = 0;
};

class Time {
 public:
  // A time split into its parts.
  struct Exploded {
    int year;
    int month;         // 1 to 12
    int day_of_week;   // 0 is Sunday
    int day_of_month;  // 1 to 31
    int hour;          // 0 to 23
    int minute;
    int second;
    int millisecond;
  };

  // The Unix epoch.
  constexpr Time() = default;

  // Reads the wall clock, or the clock with which a test has replaced it (base/clock.h).
  static Time Now();
  // 1970-01-01 00:00:00 UTC.
  static constexpr Time UnixEpoch() { return Time(); }

  // Seconds since the Unix epoch, with the fraction.
  double ToDoubleT() const;

  Time operator+(TimeDelta delta) const;
  TimeDelta operator-(Time other) const;
  constexpr auto operator<=>(const Time&) const = default;

  // In the time zone that the environment names at the time of the call (TZ), or else in the
  // system's; a change of the latter takes effect within a tick of the kernel's clock. Any thread,
  // as long as none changes the environment meanwhile.
  void LocalExplode(Exploded* exploded) const;
  void UTCExplode(Exploded* exploded) const;

 private:
  TimeDelta since_epoch_;
};

}  // namespace base

#endif  // QORN_PLATFORM_BASE_TIME_H_
