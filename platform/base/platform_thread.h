#ifndef QORN_PLATFORM_BASE_PLATFORM_THREAD_H_
#define QORN_PLATFORM_BASE_PLATFORM_THREAD_H_

#include <string>

#include "base/time.h"

namespace base {

// Operations on the calling thread.
class PlatformThread {
 public:
  // Sleeps by the process's clock (base/clock.h), so a test that moves the clock wakes it.
  static void Sleep(TimeDelta duration);
  // Sets the name that the kernel shows, cut to 15 bytes.
  static void SetName(const std::string& name);
};

}  // namespace base

#endif  // QORN_PLATFORM_BASE_PLATFORM_THREAD_H_
