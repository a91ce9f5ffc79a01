#include "gateway/output/file_limit.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace gateway {

void FileLimit::NoteOpened(const std::string& path) {
  struct stat state {};
  std::error_code none;
  const std::filesystem::path target = std::filesystem::canonical(path, none);
  const bool limited =
      limit_ > 0 && !none && stat(target.c_str(), &state) == 0 && S_ISREG(state.st_mode);
  base::AutoLock hold(lock_);
  path_ = limited ? target.string() : "";
  size_ = limited ? static_cast<uint64_t>(state.st_size) : 0;
}

bool FileLimit::MakeRoom(size_t bytes) {
  base::AutoLock hold(lock_);
  if (path_.empty()) return false;
  size_ += bytes;
  // A line that is longer than the limit has a file of its own.
  if (size_ <= limit_ || size_ == bytes) return false;
  size_ = bytes;
  // Without such a file somebody else moved it, or it could not be opened anew last time.
  if (std::rename(path_.c_str(), (path_ + ".old").c_str()) == 0 || errno == ENOENT) return true;
  [[maybe_unused]] const int ignored = truncate(path_.c_str(), 0);
  return false;
}

}  // namespace gateway
