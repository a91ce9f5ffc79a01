#ifndef QORN_DEVCLOUD_SERVICES_STATE_FILE_H_
#define QORN_DEVCLOUD_SERVICES_STATE_FILE_H_

#include <string>

#include "base/lock.h"
#include "base/thread_annotations.h"
#include "devcloud/services/accounts.h"
#include "devcloud/services/devices.h"

namespace devcloud {

// Keeps accounts and devices in a JSON file that only its owner may read, as it holds tokens.
// Thread-safe. What the constructor is given is borrowed; with an empty path nothing is kept.
class StateFile {
 public:
  StateFile(std::string path, Accounts& accounts, Devices& devices);

  // A file that is not there leaves both as they are. False, with one line in `error`, for a file
  // that cannot be read or made. A broken file is never written to.
  bool Load(std::string* error);

  // Writes what has changed since the last call, whole or not at all. Throws std::runtime_error
  // when that fails.
  void Save();

 private:
  const std::string path_;
  Accounts& accounts_;
  Devices& devices_;
  base::Lock lock_;
  std::string saved_ GUARDED_BY(lock_);
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_SERVICES_STATE_FILE_H_
