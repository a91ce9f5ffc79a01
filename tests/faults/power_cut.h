// What a disk may hold after the power was cut.
#ifndef QORN_TESTS_FAULTS_POWER_CUT_H_
#define QORN_TESTS_FAULTS_POWER_CUT_H_

#include <map>
#include <random>
#include <string>
#include <vector>

#include "bench/memory_disk.h"

namespace faults {

// Follows the changes of a disk up to the moment of the cut. What was synced is there afterwards;
// of what was not, any part may be: of a file's writes any of their sectors of 512 bytes, in any
// order; of the folder's entries, for each name, those up to some change of it.
class PowerCut {
 public:
  using Files = bench::MemoryDisk::Files;

  // A disk that lies about its syncs has synced nothing.
  explicit PowerCut(bool syncs) : syncs_(syncs) {}

  void Follow(const bench::DiskChange& change);

  // With all or none of what was not synced in the files and in the folder.
  Files Extreme(bool files_kept, bool folder_kept) const;
  // With a random part of it.
  Files Sample(std::mt19937& random) const;

 private:
  struct File {
    std::string synced;
    std::vector<bench::DiskChange> pending;  // Writes and truncations.
  };

  static std::string SamplePending(const File& file, std::mt19937& random);

  const bool syncs_;
  std::map<int, File> files_;
  // The files that a name stood for, 0 for none: the one that was synced and those after it.
  std::map<std::string, std::vector<int>> entries_;
};

}  // namespace faults

#endif  // QORN_TESTS_FAULTS_POWER_CUT_H_
