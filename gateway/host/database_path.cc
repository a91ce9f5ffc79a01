#include "gateway/host/database_path.h"

#include "base/file_path.h"
#include "base/path_service.h"

namespace gateway {

std::string JoinDatabasePath(const std::string& storage_path, const std::string& file_name) {
  if (file_name.empty()) return "";
  // As in the component, no "/" is put between them.
  if (!storage_path.empty()) return storage_path + file_name;
  FilePath program_folder;
  PathService::Get(base::kDirExe, &program_folder);
  return program_folder.Append(file_name).value();
}

std::string FolderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace gateway
