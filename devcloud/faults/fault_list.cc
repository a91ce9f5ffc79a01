#include "devcloud/faults/fault_list.h"

#include <algorithm>
#include <utility>

namespace devcloud {
namespace {

bool Matches(const std::string& pattern, const std::string& text) {
  return pattern == "*" || pattern == text;
}

}  // namespace

std::uint64_t FaultList::Add(Fault fault) {
  base::AutoLock lock(lock_);
  fault.number = ++last_number_;
  // Numbered even if it applies to nothing, so that the caller need not tell the cases apart.
  if (fault.times != 0) faults_.push_back(std::move(fault));
  return last_number_;
}

bool FaultList::Remove(std::uint64_t number) {
  base::AutoLock lock(lock_);
  return std::erase_if(faults_, [number](const Fault& f) { return f.number == number; }) > 0;
}

void FaultList::Clear() {
  base::AutoLock lock(lock_);
  faults_.clear();
}

void FaultList::StartOver() {
  base::AutoLock lock(lock_);
  faults_.clear();
  last_number_ = 0;
}

std::optional<Fault> FaultList::Take(const std::string& path, const std::string& user) {
  base::AutoLock lock(lock_);
  for (auto it = faults_.begin(); it != faults_.end(); ++it) {
    if (!Matches(it->path, path) || !Matches(it->user, user)) continue;
    const Fault met = *it;  // a copy, as the entry may go
    if (it->times > 0 && --it->times == 0) faults_.erase(it);
    return met;
  }
  return std::nullopt;
}

bool FaultList::Names(const std::string& path) const {
  base::AutoLock lock(lock_);
  return std::any_of(faults_.begin(), faults_.end(),
                     [&path](const Fault& fault) { return fault.path == path; });
}

std::vector<Fault> FaultList::faults() const {
  base::AutoLock lock(lock_);
  return faults_;
}

}  // namespace devcloud
