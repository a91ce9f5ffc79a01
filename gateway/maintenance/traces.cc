#include "gateway/maintenance/traces.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <regex>
#include <system_error>

#include "gateway/console/history_file.h"
#include "gateway/host/database_path.h"
#include "gateway/maintenance/files.h"

namespace gateway {
namespace {

// The file, and those to whose names a rotation added ".old", a number, a date or ".gz".
std::vector<std::string> WithRotated(const std::string& path) {
  static const std::regex kAdded("(\\.old|[.-][0-9-]+)?(\\.(gz|bz2|xz|zst))?");
  std::vector<std::string> found;
  if (path.empty()) return found;
  std::error_code none;
  const std::string own = std::filesystem::path(path).filename().string();
  for (std::filesystem::directory_iterator entry(FolderOf(path), none), end; !none && entry != end;
       entry.increment(none)) {
    const std::string name = entry->path().filename().string();
    if (name.starts_with(own) && std::regex_match(name.substr(own.size()), kAdded)) {
      found.push_back(entry->path().string());
    }
  }
  std::sort(found.begin(), found.end());
  return found;
}

// What a symbolic link leads to; "" for anything else.
std::string TargetOf(const std::string& path) {
  std::error_code none;
  if (!std::filesystem::is_symlink(path, none)) return "";
  const std::filesystem::path target = std::filesystem::canonical(path, none);
  return none ? "" : target.string();
}

}  // namespace

std::vector<std::string> FindTraces(const std::string& database, const std::string& log_file,
                                    const std::string& audit_file) {
  std::vector<std::string> paths = {database + ".before-restore", database + ".before-restore.new",
                                    database + ".new", FolderOf(database) + "/keeper.json",
                                    HistoryFile::DefaultPath()};
  paths.erase(std::remove_if(paths.begin(), paths.end(),
                             [](const std::string& path) { return path.empty() || !Exists(path); }),
              paths.end());
  for (const std::string& file : {log_file, TargetOf(log_file), audit_file, TargetOf(audit_file)}) {
    const std::vector<std::string> rotated = WithRotated(file);
    paths.insert(paths.end(), rotated.begin(), rotated.end());
  }
  return paths;
}

bool RemoveTrace(const std::string& path, std::string* error) {
  if (std::remove(path.c_str()) == 0) return true;
  *error = path + ": cannot be removed: " + std::strerror(errno);
  return false;
}

}  // namespace gateway
