#include "gateway/host/database_files.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "gateway/host/database_path.h"
#include "gateway/host/free_space.h"

namespace gateway {
namespace {

constexpr mode_t kOthers = S_IRWXG | S_IRWXO;
constexpr uint64_t kMebibyte = uint64_t{1} << 20;

std::string Octal(mode_t mode) {
  char text[8];
  snprintf(text, sizeof(text), "%04o", static_cast<unsigned>(mode & 07777));
  return text;
}

std::string UserName(uid_t uid) {
  passwd entry{};
  passwd* found = nullptr;
  char text[4096];
  if (getpwuid_r(uid, &entry, text, sizeof(text), &found) == 0 && found != nullptr) {
    return entry.pw_name;
  }
  return "user " + std::to_string(uid);
}

// Marks what is wrong with the owner or the mode of a folder or a file.
void JudgeAccess(const std::string& path, const struct stat& status, int wanted,
                 const std::string& mode, Finding* finding) {
  const bool folder = S_ISDIR(status.st_mode);
  const char* const object = folder ? "folder" : "file";
  const std::string owner = UserName(status.st_uid);
  finding->Mark(Severity::kGood, "only its owner, " + owner + ", can get at it");
  if ((status.st_mode & kOthers) != 0) {
    finding->MarkWarning(std::string("others than its owner can get at the ") + object + " (mode " +
                         Octal(status.st_mode) + "): chmod it to " + mode);
  }
  if (faccessat(AT_FDCWD, path.c_str(), wanted, AT_EACCESS) == 0) return;
  finding->MarkBad("this user, " + UserName(geteuid()) + ", cannot use it (" +
                   std::strerror(errno) + "): run as the gateway's user");
}

bool ExamineFolder(const std::string& folder, uid_t* owner, Finding* finding) {
  struct stat status {};
  if (stat(folder.c_str(), &status) != 0) {
    finding->MarkBad(errno == ENOENT ? "is not there, and the gateway does not make it: make it, "
                                       "for the gateway's user, with mode 0700"
                                     : std::string("cannot be examined: ") + std::strerror(errno));
    return false;
  }
  if (!S_ISDIR(status.st_mode)) {
    finding->MarkBad("is not a folder");
    return false;
  }
  JudgeAccess(folder, status, R_OK | W_OK | X_OK, "0700", finding);
  *owner = status.st_uid;
  return true;
}

Finding ExamineSpace(const std::string& folder) {
  Finding finding{"database.free_space", std::nullopt, "enough for many users"};
  const std::optional<uint64_t> free_space = FreeBytes(folder);
  if (!free_space) {
    finding.MarkWarning(std::string("cannot be told: ") + std::strerror(errno));
    return finding;
  }
  finding.value = InMebibytes(*free_space);
  if (*free_space < kMebibyte) {
    finding.MarkBad("writes will fail, and the gateway does not report that: make room");
  } else if (*free_space < kLowSpace) {
    finding.MarkWarning("make room soon: a write that fails is not reported");
  }
  return finding;
}

// False when there is nothing to be opened.
bool ExamineFile(const std::string& path, uid_t folder_owner, Finding* finding) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) {
      finding->MarkWarning("is not there: the gateway makes it at its next start");
    } else {
      finding->MarkBad(std::string("cannot be examined: ") + std::strerror(errno));
    }
    return false;
  }
  if (!S_ISREG(status.st_mode)) {
    finding->MarkBad("is not a file: the gateway cannot store anything");
    return false;
  }
  JudgeAccess(path, status, R_OK | W_OK, "0600", finding);
  if (status.st_uid != folder_owner) {
    finding->MarkWarning("its folder belongs to " + UserName(folder_owner) +
                         ": give the file to the same user");
  }
  return faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) == 0;
}

Finding ExamineLeftovers(const std::string& path) {
  Finding finding{"database.leftovers", std::nullopt, "no write is under way or was interrupted"};
  for (const char* suffix : {"-journal", "-wal", "-shm"}) {
    struct stat status {};
    const std::string beside = path + suffix;
    if (lstat(beside.c_str(), &status) != 0) continue;
    finding.value = finding.value ? *finding.value + " " + beside : beside;
    finding.MarkWarning(std::string(suffix) == "-journal"
                            ? "a write is under way, or one was interrupted and is "
                              "undone at the gateway's next start: leave it there"
                            : "another program than the gateway wrote the database");
  }
  return finding;
}

}  // namespace

bool ExamineFiles(const std::string& path, Findings* findings) {
  const std::string folder = FolderOf(path);
  Finding folder_finding{"database.folder", folder, ""};
  uid_t owner = 0;
  const bool has_folder = ExamineFolder(folder, &owner, &folder_finding);
  findings->push_back(folder_finding);
  if (!has_folder) return false;
  findings->push_back(ExamineSpace(folder));
  Finding file{"database.file", path, ""};
  const bool has_file = ExamineFile(path, owner, &file);
  findings->push_back(file);
  findings->push_back(ExamineLeftovers(path));
  return has_file;
}

}  // namespace gateway
