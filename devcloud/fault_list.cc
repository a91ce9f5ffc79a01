#include "devcloud/fault_list.h"

#include <utility>

namespace devcloud {

std::uint64_t FaultList::Add(Fault fault) {
  MutexLock lock(mutex_);
  fault.number = ++last_number_;
  if (fault.times != 0) faults_.push_back(std::move(fault));
  return last_number_;
}

bool FaultList::Remove(std::uint64_t number) {
  MutexLock lock(mutex_);
  return std::erase_if(faults_, [number](const Fault& f) { return f.number == number; }) > 0;
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
