#ifndef QORN_PLATFORM_BASE_FILE_PATH_H_
#define QORN_PLATFORM_BASE_FILE_PATH_H_

#include <string>

// The path of a file or directory, absolute or relative. A plain value; it never touches the disk.
class FilePath {
 public:
  FilePath();
  explicit FilePath(const std::string& path);
  static FilePath FromUTF8Unsafe(const std::string& utf8);

  const std::string& value() const { return path_; }
  bool empty() const { return path_.empty(); }

  // This path, one separator and `component`; no separator if one of the two is empty.
  FilePath Append(const std::string& component) const;

 private:
  std::string path_;
};

#endif  // QORN_PLATFORM_BASE_FILE_PATH_H_
