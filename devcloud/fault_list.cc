#include "devcloud/fault_list.h"

#include <utility>

namespace devcloud {

void FaultList::Add(Fault fault) {
  MutexLock lock(mutex_);
  if (fault.times != 0) faults_.push_back(std::move(fault));
}

void FaultList::Clear() {
  MutexLock lock(mutex_);
  faults_.clear();
}

std::optional<Fault> FaultList::Take(const std::string& path) {
  MutexLock lock(mutex_);
  for (auto it = faults_.begin(); it != faults_.end(); ++it) {
    if (it->path != "*" && it->path != path) continue;
    const Fault met = *it;
    if (it->times > 0 && --it->times == 0) faults_.erase(it);
    return met;
  }
  return std::nullopt;
}

std::vector<Fault> FaultList::faults() const {
  MutexLock lock(mutex_);
  return faults_;
}

}  // namespace devcloud
