// How much may still be written to a folder's file system.
#ifndef QORN_GATEWAY_HOST_FREE_SPACE_H_
#define QORN_GATEWAY_HOST_FREE_SPACE_H_

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <thread>

#include "base/condition_variable.h"
#include "base/lock.h"
#include "base/thread_annotations.h"

namespace gateway {

// Below this, in bytes, somebody should make room. SQLite needs far less for a change.
inline constexpr uint64_t kLowSpace = uint64_t{16} << 20;

// The bytes that this process may still write to the folder's file system; none when that is not
// known.
std::optional<uint64_t> FreeBytes(const std::string& folder);

// "12 MiB", rounded down.
std::string InMebibytes(uint64_t bytes);

// Looks at a folder's free space at once and every minute, on a thread of its own.
class FreeSpaceWatch {
 public:
  // Called on that thread with the free bytes when they have become fewer than kLowSpace, and when
  // they are no longer.
  using OnChange = std::function<void(uint64_t bytes, bool low)>;

  FreeSpaceWatch(std::string folder, OnChange on_change);
  // Looks at least once before it ends.
  ~FreeSpaceWatch();
  FreeSpaceWatch(const FreeSpaceWatch&) = delete;
  FreeSpaceWatch& operator=(const FreeSpaceWatch&) = delete;

 private:
  void Run();

  const std::string folder_;
  const OnChange on_change_;
  base::Lock lock_;
  base::ConditionVariable stopped_;
  bool stop_ GUARDED_BY(lock_) = false;
  std::thread thread_;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_HOST_FREE_SPACE_H_
