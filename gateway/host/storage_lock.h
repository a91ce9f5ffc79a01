// Keeps a second gateway from a storage folder that one works in.
#ifndef QORN_GATEWAY_HOST_STORAGE_LOCK_H_
#define QORN_GATEWAY_HOST_STORAGE_LOCK_H_

#include <string>

#include "base/scoped_fd.h"

namespace gateway {

// A lock on the folder itself (flock), so that nothing is left behind; the system gives it back
// when the process ends, however it ends. Not thread-safe.
class StorageLock {
 public:
  // Takes the folder of the database at `database`, an absolute path or one seen from the working
  // folder. False, with one line in `error`, when another process has it. True, and nothing
  // is locked, for "" and for a folder that cannot be opened: there is nothing to share.
  bool Take(const std::string& database, std::string* error);

 private:
  base::ScopedFd folder_;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_HOST_STORAGE_LOCK_H_
