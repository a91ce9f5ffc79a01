// The lines that were typed, kept from one run to the next.
#ifndef QORN_GATEWAY_CONSOLE_HISTORY_FILE_H_
#define QORN_GATEWAY_CONSOLE_HISTORY_FILE_H_

#include <string>
#include <vector>

namespace gateway {

// A file of mode 0600 with one line each. The console works without it when it cannot be read or
// written. Not thread-safe.
class HistoryFile {
 public:
  // "" keeps nothing.
  explicit HistoryFile(std::string path);

  // In the user's state folder, which is made: $XDG_STATE_HOME/qorn/history, or
  // ~/.local/state/qorn/history. "" when there is no such folder.
  static std::string DefaultPath();

  // The last 1,000 lines, oldest first. Lines that nobody can have typed (control characters, over
  // 4,096 bytes) are left out, so that a broken file does no harm. A file of over 2,000 lines is
  // cut down to what is returned.
  std::vector<std::string> Load();

  void Append(const std::string& line);

 private:
  void Replace(const std::vector<std::string>& lines) const;

  const std::string path_;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_CONSOLE_HISTORY_FILE_H_
