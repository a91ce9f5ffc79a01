#ifndef QORN_PLATFORM_BASE_PLATFORM_THREAD_H_
#define QORN_PLATFORM_BASE_PLATFORM_THREAD_H_

#include <string>

#include "base/time.h"

namespace base {

// Operations on the calling thread.
class PlatformThread {
 public:
  // Waits by the process's clock (base/clock.h): a test that moves the clock ends it.
  static void Sleep(TimeDelta duration);
  // Sets the name that the kernel shows; all but its first 15 bytes are left out.
  static void SetName(const std::string& name);
};

}  // namespace base

#endif  // QORN_PLATFORM_BASE_PLATFORM_THREAD_H_
