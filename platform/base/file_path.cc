#include "base/file_path.h"

FilePath::FilePath() = default;

FilePath::FilePath(const std::string& path) : path_(path) {}

FilePath FilePath::FromUTF8Unsafe(const std::string& utf8) { return FilePath(utf8); }

FilePath FilePath::Append(const std::string& component) const {
  if (path_.empty() || component.empty()) return FilePath(path_ + component);
  const size_t last = path_.find_last_not_of('/');
  const std::string base = last == std::string::npos ? "" : path_.substr(0, last + 1);
  return FilePath(base + "/" + component);
}
