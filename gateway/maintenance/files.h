// Files that are read and written whole. Each function that fails leaves one line in `error`.
#ifndef QORN_GATEWAY_MAINTENANCE_FILES_H_
#define QORN_GATEWAY_MAINTENANCE_FILES_H_

#include <cstddef>
#include <string>

namespace gateway {

// Reads a regular file, or standard input for "-". Does not follow a symbolic link at the end of
// the path, and does not wait for a named pipe.
bool ReadWhole(const std::string& path, size_t max_bytes, std::string* bytes, std::string* error);

// Writes a file with mode 0600, or to standard output for "-". The file is there whole or not at
// all, also after a power cut. An existing file is replaced only with `replace`, anything else
// than a file never.
bool WriteWhole(const std::string& path, const std::string& bytes, bool replace,
                std::string* error);

// Puts a database in the place of the one at `path`, which is kept as PATH.before-restore; it
// belongs to the folder's owner. At any moment the file at `path` is the old one or the new one,
// whole. Hold the folder's lock.
bool ReplaceDatabase(const std::string& path, const std::string& bytes, std::string* error);

// Whether something, if only a dangling link, has this name.
bool Exists(const std::string& path);

}  // namespace gateway

#endif  // QORN_GATEWAY_MAINTENANCE_FILES_H_
