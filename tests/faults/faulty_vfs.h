// SQLite's way to files, where any call can fail.
#ifndef QORN_TESTS_FAULTS_FAULTY_VFS_H_
#define QORN_TESTS_FAULTS_FAULTY_VFS_H_

#include <sqlite3.h>

#include <functional>
#include <vector>

namespace faults {

// What SQLite asks of the system; kAccess is also the question for a file's size.
enum class FileCall { kOpen, kRead, kWrite, kSync, kTruncate, kLock, kDelete, kAccess };

// kBusy: another process has the lock. kDelayed: it only comes later.
enum class FaultKind { kFails, kBusy, kDelayed };

struct FileFault {
  FileCall call;
  FaultKind kind;
  bool lasting;  // each later call of the sort has it too
};

// Each kind of each call that it makes sense for, once and lasting.
std::vector<FileFault> AllFileFaults();

// The default one while it lives; one at a time, and no connection outlives it. Without a fault it
// passes everything on.
class FaultyVfs {
 public:
  FaultyVfs();
  ~FaultyVfs();

  // From now on the `nth` such call, counted from 1, has the fault. `delay` runs on the thread of a
  // call that comes later or finds a lock taken.
  void Set(const FileFault& fault, int nth, std::function<void()> delay);
  // Ends the fault; whether a call had it.
  bool Clear();

 private:
  sqlite3_vfs* const real_;
  sqlite3_vfs vfs_;
};

}  // namespace faults

#endif  // QORN_TESTS_FAULTS_FAULTY_VFS_H_
