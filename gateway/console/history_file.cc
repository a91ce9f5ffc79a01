#include "gateway/console/history_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "base/scoped_fd.h"
#include "gateway/output/text.h"

namespace gateway {
namespace {

constexpr mode_t kOwnerOnly = 0600;
constexpr size_t kKeptLines = 1000;
constexpr size_t kMostLines = 2000;
constexpr size_t kMaxLineBytes = 4096;
constexpr std::uintmax_t kMaxFileBytes = std::uintmax_t{16} << 20;

std::string StateFolder() {
  const char* state = std::getenv("XDG_STATE_HOME");
  if (state != nullptr && state[0] == '/') return state;
  const char* home = std::getenv("HOME");
  return home != nullptr && home[0] == '/' ? std::string(home) + "/.local/state" : "";
}

bool WriteText(const std::string& path, int flags, const std::string& text) {
  // Neither follow a link that somebody else put there nor block on a named pipe.
  const base::ScopedFd file(
      open(path.c_str(), flags | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, kOwnerOnly));
  if (file.get() < 0) return false;
  // The file may exist with a wider mode.
  fchmod(file.get(), kOwnerOnly);
  return write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

}  // namespace

HistoryFile::HistoryFile(std::string path) : path_(std::move(path)) {}

std::string HistoryFile::DefaultPath() {
  const std::string state = StateFolder();
  if (state.empty()) return "";
  std::error_code failure;
  std::filesystem::create_directories(state + "/qorn", failure);
  return failure ? "" : state + "/qorn/history";
}

std::vector<std::string> HistoryFile::Load() {
  std::error_code failure;
  std::vector<std::string> lines;
  if (path_.empty() || !std::filesystem::is_regular_file(path_, failure) ||
      std::filesystem::file_size(path_, failure) > kMaxFileBytes) {
    return lines;
  }
  std::ifstream file(path_);
  size_t count = 0;
  for (std::string line; std::getline(file, line); ++count) {
    if (line.empty() || line.size() > kMaxLineBytes || HasControlCharacter(line)) continue;
    lines.push_back(line);
  }
  if (lines.size() > kKeptLines) {
    lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(kKeptLines));
  }
  // Not at every line above the limit: the file is rewritten once in a thousand lines.
  if (count > kMostLines) Replace(lines);
  return lines;
}

void HistoryFile::Append(const std::string& line) {
  if (path_.empty() || line.size() > kMaxLineBytes) return;
  WriteText(path_, O_WRONLY | O_APPEND, line + "\n");
}

void HistoryFile::Replace(const std::vector<std::string>& lines) const {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  // Written beside it and renamed, so that a crash leaves the old history or the new one.
  const std::string fresh = path_ + ".new";
  if (WriteText(fresh, O_WRONLY | O_TRUNC, text)) std::rename(fresh.c_str(), path_.c_str());
}

}  // namespace gateway
