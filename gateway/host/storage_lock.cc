#include "gateway/host/storage_lock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <utility>

namespace gateway {

bool StorageLock::Take(const std::string& database, std::string* error) {
  if (database.empty()) return true;
  const size_t slash = database.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : database.substr(0, slash + 1);
  base::ScopedFd opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // The component will fail to open its database, and says so itself.
  if (!opened.is_valid()) return true;
  // The folder and not the database: closing another descriptor of a file drops the locks that
  // SQLite holds on it, and a lock file would be left behind.
  if (flock(opened.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    *error = "another gateway works in the storage folder " + folder;
    return false;
  }
  folder_ = std::move(opened);
  return true;
}

}  // namespace gateway
