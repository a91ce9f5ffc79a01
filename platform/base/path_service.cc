#include "base/path_service.h"

#include <dlfcn.h>

#include <filesystem>
#include <system_error>

namespace {

namespace fs = std::filesystem;

fs::path CurrentDirectory(std::error_code& error) { return fs::current_path(error); }

// The kernel's link: a library does not see the program's arguments, and they may be wrong.
fs::path ExecutableDirectory(std::error_code& error) {
  return fs::read_symlink("/proc/self/exe", error).parent_path();
}

// By the address of a function of this library, wherever it is installed.
fs::path ModuleDirectory(std::error_code& error) {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&PathService::Get), &info) == 0) {
    error = std::make_error_code(std::errc::no_such_file_or_directory);
    return {};
  }
  return fs::canonical(info.dli_fname, error).parent_path();
}

}  // namespace

bool PathService::Get(int key, FilePath* path) {
  std::error_code error;
  fs::path found;
  switch (key) {
    case base::kDirCurrent:
      found = CurrentDirectory(error);
      break;
    case base::kDirExe:
      found = ExecutableDirectory(error);
      break;
    case base::kDirModule:
      found = ModuleDirectory(error);
      break;
    default:
      return false;
  }
  if (error) return false;
  *path = FilePath(found.string());
  return true;
}
