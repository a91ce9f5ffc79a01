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

// The faults still to come, in the order in which they were added. Thread-safe.
class FaultList {
 public:
  // Gives the fault its number and returns it; numbers are never used twice.
  std::uint64_t Add(Fault fault);
  // False when no such fault is left.
  bool Remove(std::uint64_t number);
  void Clear();
  // The first fault that fits the path, counted as met once more; null when none does.
  std::optional<Fault> Take(const std::string& path);
  std::vector<Fault> faults() const;

 private:
  mutable base::Lock lock_;
  std::vector<Fault> faults_ GUARDED_BY(lock_);
  std::uint64_t last_number_ GUARDED_BY(lock_) = 0;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_FAULTS_FAULT_LIST_H_
