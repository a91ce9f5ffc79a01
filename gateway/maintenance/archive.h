#ifndef QORN_GATEWAY_MAINTENANCE_ARCHIVE_H_
#define QORN_GATEWAY_MAINTENANCE_ARCHIVE_H_

#include <cstddef>
#include <string>

#include "gateway/maintenance/manifest.h"

namespace gateway {

// Larger ones are neither made nor read: they are held in memory.
constexpr size_t kMaxArchiveBytes = size_t{64} << 20;

// A copy of the database with its manifest.
struct Copy {
  Manifest manifest;
  std::string database;  // the bytes of the file
};

// A tar archive of two files, manifest.json and account.db. A copy has exactly one archive.
std::string MakeArchive(const Copy& copy);

// False, with a reason in `error`, for bytes that MakeArchive did not make or that changed since:
// a single bit is enough.
bool ReadArchive(const std::string& archive, Copy* copy, std::string* error);

}  // namespace gateway

#endif  // QORN_GATEWAY_MAINTENANCE_ARCHIVE_H_
