#ifndef QORN_DEVCLOUD_FAULTS_FAULT_LIST_H_
#define QORN_DEVCLOUD_FAULTS_FAULT_LIST_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/lock.h"
#include "base/thread_annotations.h"
#include "devcloud/faults/fault.h"

namespace devcloud {

// The faults that still apply, in the order in which they were added. Thread-safe.
class FaultList {
 public:
  // Numbers the fault and returns its number. Numbers are not reused before StartOver.
  std::uint64_t Add(Fault fault);
  // False if there is no such fault.
  bool Remove(std::uint64_t number);
  void Clear();
  // Clears the list and begins again with the number 1.
  void StartOver();
  // The first fault that applies to this path and user, or null. Uses up one of its times.
  std::optional<Fault> Take(const std::string& path, const std::string& user);
  // Whether a fault is for exactly this path; "*" is not.
  bool Names(const std::string& path) const;
  std::vector<Fault> faults() const;

 private:
  mutable base::Lock lock_;
  std::vector<Fault> faults_ GUARDED_BY(lock_);
  std::uint64_t last_number_ GUARDED_BY(lock_) = 0;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_FAULTS_FAULT_LIST_H_
