#include "gateway/host/free_space.h"

#include <sys/statvfs.h>

namespace gateway {

std::optional<uint64_t> FreeBytes(const std::string& folder) {
  struct statvfs state {};
  if (statvfs(folder.c_str(), &state) != 0) return std::nullopt;
  return static_cast<uint64_t>(state.f_bavail) * state.f_frsize;
}

}  // namespace gateway
