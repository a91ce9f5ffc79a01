#include "base/platform_thread.h"

#include <pthread.h>

#include "base/clock.h"
#include "base/sleeper.h"

namespace base {

void PlatformThread::Sleep(TimeDelta duration) {
  Sleeper().SleepUntil(Clock::Get()->Uptime() + duration);
}

void PlatformThread::SetName(const std::string& name) {
  // The kernel refuses longer names.
  constexpr size_t kLongestName = 15;
  pthread_setname_np(pthread_self(), name.substr(0, kLongestName).c_str());
}

}  // namespace base
