#ifndef QORN_PLATFORM_BASE_PATH_SERVICE_H_
#define QORN_PLATFORM_BASE_PATH_SERVICE_H_

#include "base/file_path.h"

namespace base {

// Keys of PathService. Components pass the plain numbers: never renumber.
enum PathKey {
  kDirCurrent = 1,  // The process's current directory.
  kDirExe = 2,      // The directory of the running executable.
  kDirModule = 3,   // The directory of the platform's library.
};

}  // namespace base

class PathService {
 public:
  // False, with `*path` untouched, if the key is unknown or the system call fails. Any thread.
  static bool Get(int key, FilePath* path);
};

#endif  // QORN_PLATFORM_BASE_PATH_SERVICE_H_
