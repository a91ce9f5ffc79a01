#include "gateway/maintenance/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "base/scoped_fd.h"
#include "gateway/host/database_path.h"

namespace gateway {
namespace {

constexpr mode_t kOwnerOnly = 0600;

bool Fail(const std::string& path, const std::string& what, std::string* error) {
  *error = path + ": " + what + ": " + std::strerror(errno);
  return false;
}

bool WriteAll(int fd, const std::string& bytes) {
  for (size_t done = 0; done < bytes.size();) {
    const ssize_t count = write(fd, bytes.data() + done, bytes.size() - done);
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) done += static_cast<size_t>(count);
  }
  return true;
}

bool SyncFolder(const std::string& folder) {
  const base::ScopedFd opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return opened.is_valid() && fsync(opened.get()) == 0;
}

// Gives the file to the owner of its folder: root may do the gateway's maintenance.
bool GiveToFolderOwner(int fd, const std::string& folder) {
  struct stat owner {};
  struct stat file {};
  if (stat(folder.c_str(), &owner) != 0 || fstat(fd, &file) != 0) return false;
  return owner.st_uid == file.st_uid || fchown(fd, owner.st_uid, owner.st_gid) == 0;
}

// A file under a name of its own, removed unless it gets the name that it is for.
class Draft {
 public:
  explicit Draft(std::string path) : path_(std::move(path)) {}
  ~Draft() {
    if (!kept_) unlink(path_.c_str());
  }
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;

  bool Write(const std::string& bytes, bool for_folder_owner) const {
    unlink(path_.c_str());  // from a run that crashed
    const base::ScopedFd file(
        open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kOwnerOnly));
    return file.is_valid() &&
           (!for_folder_owner || GiveToFolderOwner(file.get(), FolderOf(path_))) &&
           WriteAll(file.get(), bytes) && fsync(file.get()) == 0;
  }

  bool Rename(const std::string& path, bool replace) {
    int failed =
        renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, path.c_str(), replace ? 0 : RENAME_NOREPLACE);
    // Some file systems of the network cannot; then the caller's look has to do.
    if (failed != 0 && errno == EINVAL) failed = std::rename(path_.c_str(), path.c_str());
    kept_ = failed == 0;
    return kept_;
  }

 private:
  const std::string path_;
  bool kept_ = false;
};

bool ReadAll(int fd, size_t max_bytes, std::string* bytes) {
  char block[1 << 16];
  for (ssize_t count = 1; count != 0;) {
    count = read(fd, block, sizeof(block));
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) bytes->append(block, static_cast<size_t>(count));
    if (bytes->size() > max_bytes) {
      errno = EFBIG;
      return false;
    }
  }
  return true;
}

// The mode of what has this name; 0 for nothing.
mode_t ModeOf(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 ? status.st_mode : 0;
}

}  // namespace

bool Exists(const std::string& path) { return ModeOf(path) != 0; }

bool ReadWhole(const std::string& path, size_t max_bytes, std::string* bytes, std::string* error) {
  if (path == "-") {
    return ReadAll(STDIN_FILENO, max_bytes, bytes) ||
           Fail("standard input", "cannot be read", error);
  }
  const base::ScopedFd file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!file.is_valid() || fstat(file.get(), &status) != 0) {
    if (errno != ELOOP) return Fail(path, "cannot be opened", error);
    *error = path + ": is a symbolic link: name the file itself";
    return false;
  }
  if (!S_ISREG(status.st_mode)) {
    *error = path + ": is not a file";
    return false;
  }
  return ReadAll(file.get(), max_bytes, bytes) || Fail(path, "cannot be read", error);
}

bool WriteWhole(const std::string& path, const std::string& bytes, bool replace,
                std::string* error) {
  if (path == "-") {
    return WriteAll(STDOUT_FILENO, bytes) || Fail("standard output", "cannot be written", error);
  }
  const mode_t mode = ModeOf(path);
  if (mode != 0 && (!replace || !S_ISREG(mode))) {
    *error = path + (S_ISREG(mode) ? ": is there already: --force replaces it"
                                   : ": is there already, and is not a file");
    return false;
  }
  // Two runs at once must not write the same draft.
  Draft draft(path + "." + std::to_string(getpid()) + ".new");
  return (draft.Write(bytes, false) && draft.Rename(path, replace) && SyncFolder(FolderOf(path))) ||
         Fail(path, "cannot be written", error);
}

bool ReplaceDatabase(const std::string& path, const std::string& bytes, std::string* error) {
  const mode_t mode = ModeOf(path);
  if (mode != 0 && !S_ISREG(mode)) {
    *error = path + ": is not a file, and is not replaced";
    return false;
  }
  const std::string folder = FolderOf(path);
  const std::string kept = path + ".before-restore";
  Draft draft(path + ".new");
  if (!draft.Write(bytes, true)) return Fail(path, "cannot be replaced", error);
  // A second name for the old file, so that its own is never missing. What was kept before goes
  // only when that is there.
  const std::string second = kept + ".new";
  unlink(second.c_str());  // from a run that crashed
  if (mode != 0 && (link(path.c_str(), second.c_str()) != 0 ||
                    renameat2(AT_FDCWD, second.c_str(), AT_FDCWD, kept.c_str(), 0) != 0 ||
                    !SyncFolder(folder))) {
    Fail(kept, "cannot be made", error);
    unlink(second.c_str());
    return false;
  }
  // A rename between two names of one file leaves both.
  unlink(second.c_str());
  if (!draft.Rename(path, true)) return Fail(path, "cannot be replaced", error);
  return SyncFolder(folder) ||
         Fail(folder, "cannot be synced: a power cut may undo the restore", error);
}

}  // namespace gateway
