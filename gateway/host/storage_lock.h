// Keeps a second gateway out of a storage folder that is in use.
#ifndef QORN_GATEWAY_HOST_STORAGE_LOCK_H_
#define QORN_GATEWAY_HOST_STORAGE_LOCK_H_

#include <string>

#include "base/scoped_fd.h"

namespace gateway {

// A lock on the folder itself (flock), so that nothing is left behind; the kernel
// releases it when the process ends, even by a crash. Not thread-safe.
class StorageLock {
 public:
  // Locks the folder of the database at `database`, an absolute path or one relative to the working
  // directory. False, with one line in `error`, when another process holds it. True, and nothing
  // is locked, for "" and for a folder that cannot be opened: there is nothing to share.
  bool Take(const std::string& database, std::string* error);

 private:
  base::ScopedFd folder_;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_HOST_STORAGE_LOCK_H_
