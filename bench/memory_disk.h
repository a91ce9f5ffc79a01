// A disk in memory for SQLite, which tells each change that is made to it.
#ifndef QORN_BENCH_MEMORY_DISK_H_
#define QORN_BENCH_MEMORY_DISK_H_

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace bench {

struct DiskChange {
  enum class Kind { kCreate, kWrite, kTruncate, kSync, kDelete, kSyncFolder };
  Kind kind;
  int file;               // Each file that was ever made has a number of its own; 0: the folder.
  std::string name;       // Its path.
  std::int64_t at = 0;    // Where a write begins; the size after a truncation.
  std::string data = {};  // What is written.
};

// Writes the text into a file's data, which grows by zeros where it has to.
void Overwrite(std::size_t at, std::string_view text, std::string* data);

// SQLite's default VFS while it lives; one at a time, and no connection outlives it. It asks for
// the same syncs as SQLite's unix VFS: the first one of a new journal syncs the folder, too, and a
// deletion does when it is told to. Nothing is locked: connections and threads take turns.
class MemoryDisk {
 public:
  using Files = std::map<std::string, std::string>;  // Contents by paths.

  MemoryDisk();
  ~MemoryDisk();
  MemoryDisk(const MemoryDisk&) = delete;
  MemoryDisk& operator=(const MemoryDisk&) = delete;

  // From now on each change of a file with a name is told to `observe`, on the thread that makes it
  // and before it is made.
  void Observe(std::function<void(const DiskChange&)> observe) { observe_ = std::move(observe); }

  // Gives `to` what `from` holds, if there is such a file. No connection has `to` open.
  void Copy(const std::string& from, const std::string& to);
  // No connection is open.
  void SetFiles(const Files& files);

 private:
  struct Node;
  struct File;
  struct Methods;

  void Tell(DiskChange change) const {
    if (observe_) observe_(change);
  }

  std::function<void(const DiskChange&)> observe_;
  std::map<std::string, std::shared_ptr<Node>> nodes_;
  int made_ = 0;
  sqlite3_vfs* const usual_;
  sqlite3_vfs vfs_;
};

}  // namespace bench

#endif  // QORN_BENCH_MEMORY_DISK_H_
