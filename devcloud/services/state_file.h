#ifndef QORN_DEVCLOUD_SERVICES_STATE_FILE_H_
#define QORN_DEVCLOUD_SERVICES_STATE_FILE_H_

#include <string>

#include "base/lock.h"
#include "base/thread_annotations.h"
#include "devcloud/services/accounts.h"
#include "devcloud/services/devices.h"

namespace devcloud {

// Keeps accounts and devices in a JSON file, which holds tokens and so is readable by its owner
// only. Thread-safe. The constructor borrows accounts and devices; an empty path turns it off.
class StateFile {
 public:
  StateFile(std::string path, Accounts& accounts, Devices& devices);

  // Restores accounts and devices; a missing file leaves both unchanged. False, with one line in
  // `error`, if the file cannot be read or created. A file with other content is not overwritten.
  bool Load(std::string* error);

  // Replaces the file atomically if something has changed since the last call. Throws
  // std::runtime_error on failure.
  void Save();

 private:
  const std::string path_;
  Accounts& accounts_;
  Devices& devices_;
  base::Lock lock_;
  std::string saved_text_ GUARDED_BY(lock_);
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_SERVICES_STATE_FILE_H_
