#ifndef QORN_GATEWAY_OUTPUT_FILE_LIMIT_H_
#define QORN_GATEWAY_OUTPUT_FILE_LIMIT_H_

#include <cstdint>
#include <string>

#include "base/lock.h"
#include "base/thread_annotations.h"

namespace gateway {

// Keeps a file that is only appended to from filling the disk: when it would grow beyond its limit,
// it becomes the one older file, FILE.old, and a new one begins. The name is not one that logrotate
// uses, so that both can work on the same file. Thread-safe.
class FileLimit {
 public:
  // In bytes; 0: no limit.
  explicit FileLimit(uint64_t limit) : limit_(limit) {}

  // Call it whenever the file was opened. What is no regular file, such as a pipe, gets no limit;
  // of a symbolic link the file behind it is moved.
  void NoteOpened(const std::string& path);

  // Call it before so many bytes are appended. True when the file was moved out of the way: the
  // caller opens it anew. A file that cannot be moved is emptied instead.
  bool MakeRoom(size_t bytes);

 private:
  const uint64_t limit_;
  base::Lock lock_;
  std::string path_ GUARDED_BY(lock_);  // "": no limit
  uint64_t size_ GUARDED_BY(lock_) = 0;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_OUTPUT_FILE_LIMIT_H_
