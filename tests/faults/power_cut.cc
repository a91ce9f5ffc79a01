#include "tests/faults/power_cut.h"

#include <algorithm>
#include <cstdint>

namespace faults {
namespace {

using bench::DiskChange;
using Kind = DiskChange::Kind;

constexpr std::int64_t kSector = 512;

void Make(const DiskChange& change, std::string* data) {
  if (change.kind == Kind::kTruncate) return data->resize(static_cast<std::size_t>(change.at));
  bench::Overwrite(static_cast<std::size_t>(change.at), change.data, data);
}

// A write cut at the borders of sectors.
void Tear(const DiskChange& change, std::vector<DiskChange>* parts) {
  if (change.kind == Kind::kTruncate) return parts->push_back(change);
  const auto end = change.at + static_cast<std::int64_t>(change.data.size());
  for (std::int64_t at = change.at, next = 0; at < end; at = next) {
    next = std::min(end, (at / kSector + 1) * kSector);
    parts->push_back(change);
    parts->back().at = at;
    parts->back().data = change.data.substr(static_cast<std::size_t>(at - change.at),
                                            static_cast<std::size_t>(next - at));
  }
}

}  // namespace

void PowerCut::Follow(const DiskChange& change) {
  const auto enter = [&](int file) {
    entries_.try_emplace(change.name, 1, 0).first->second.push_back(file);
  };
  File& file = files_[change.file];
  switch (change.kind) {
    case Kind::kCreate:
      return enter(change.file);
    case Kind::kDelete:
      return enter(0);
    case Kind::kWrite:
    case Kind::kTruncate:
      return file.pending.push_back(change);
    case Kind::kSync:
      if (!syncs_) return;
      for (const DiskChange& pending : file.pending) Make(pending, &file.synced);
      return file.pending.clear();
    case Kind::kSyncFolder:
      if (!syncs_) return;
      for (auto& [name, entries] : entries_) entries.erase(entries.begin(), entries.end() - 1);
  }
}

PowerCut::Files PowerCut::Extreme(bool files_kept, bool folder_kept) const {
  Files files;
  for (const auto& [name, entries] : entries_) {
    const int number = folder_kept ? entries.back() : entries.front();
    if (number == 0) continue;
    const File& file = files_.at(number);
    std::string& data = files[name] = file.synced;
    for (std::size_t i = 0; files_kept && i < file.pending.size(); ++i)
      Make(file.pending[i], &data);
  }
  return files;
}

PowerCut::Files PowerCut::Sample(std::mt19937& random) const {
  Files files;
  for (const auto& [name, entries] : entries_) {
    const int number = entries[random() % entries.size()];
    if (number != 0) files[name] = SamplePending(files_.at(number), random);
  }
  return files;
}

std::string PowerCut::SamplePending(const File& file, std::mt19937& random) {
  std::vector<DiskChange> parts;
  for (const DiskChange& pending : file.pending) Tear(pending, &parts);
  if (random() % 2 == 0) std::shuffle(parts.begin(), parts.end(), random);
  const auto kept = 1 + random() % 9;  // of ten
  std::string data = file.synced;
  for (const DiskChange& part : parts) {
    if (random() % 10 < kept) Make(part, &data);
  }
  return data;
}

}  // namespace faults
