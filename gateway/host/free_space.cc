#include "gateway/host/free_space.h"

#include <sys/statvfs.h>

#include <chrono>
#include <utility>

namespace gateway {
namespace {

constexpr std::chrono::minutes kBetweenLooks{1};

}  // namespace

std::optional<uint64_t> FreeBytes(const std::string& folder) {
  struct statvfs state {};
  if (statvfs(folder.c_str(), &state) != 0) return std::nullopt;
  return static_cast<uint64_t>(state.f_bavail) * state.f_frsize;
}

std::string InMebibytes(uint64_t bytes) { return std::to_string(bytes >> 20) + " MiB"; }

FreeSpaceWatch::FreeSpaceWatch(std::string folder, OnChange on_change)
    : folder_(std::move(folder)), on_change_(std::move(on_change)), thread_([this] { Run(); }) {}

FreeSpaceWatch::~FreeSpaceWatch() {
  {
    base::AutoLock hold(lock_);
    stop_ = true;
  }
  stopped_.NotifyAll();
  thread_.join();
}

void FreeSpaceWatch::Run() {
  bool was_low = false;
  for (bool stop = false; !stop;) {
    // While it is not known nothing is told, least of all that there is room again.
    if (const std::optional<uint64_t> bytes = FreeBytes(folder_)) {
      const bool low = *bytes < kLowSpace;
      if (std::exchange(was_low, low) != low) on_change_(*bytes, low);
    }
    base::AutoLock hold(lock_);
    if (!stop_) stopped_.WaitFor(lock_, kBetweenLooks);
    stop = stop_;
  }
}

}  // namespace gateway
