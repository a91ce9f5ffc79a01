#include "gateway/operations/audit.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>

#include "gateway/output/clock_text.h"
#include "gateway/output/json_lines.h"

namespace gateway {
namespace {

constexpr mode_t kOwnerOnly = 0600;

// Usually one write() for a whole line, so that a reader of the growing file never sees half of
// one.
bool WriteAll(int fd, const std::string& line) {
  for (size_t at = 0; at < line.size();) {
    const ssize_t count = write(fd, line.data() + at, line.size() - at);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    at += static_cast<size_t>(count);
  }
  return true;
}

}  // namespace

bool Audit::Open(const std::string& path) {
  base::AutoLock hold(lock_);
  const std::string before = std::exchange(path_, path);
  const bool good = OpenFile();
  if (good) {
    limit_.NoteOpened(path_);
  } else {
    path_ = before;
  }
  return good;
}

bool Audit::OpenFile() {
  // O_NONBLOCK: a named pipe without a reader would block the start here, and a full one would
  // block the bus, whose thread writes events.
  base::ScopedFd file(
      open(path_.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, kOwnerOnly));
  if (file.get() < 0) return false;
  file_.emplace(std::move(file));
  return true;
}

void Audit::NoteEvent(const SeenEvent& event) {
  std::vector<Field> fields = {{"event", {event.name}}};
  for (const Field& field : event.fields) {
    if (!field.secret) fields.push_back(field);
  }
  Append("event", std::move(fields));
}

void Audit::NoteCommand(const CommandNote& command) {
  AppendDeed("command", {{"command", {command.name}}}, command.user_uuid, command.user_id,
             command.result, command.message);
}

void Audit::NoteCall(const CallNote& call) {
  std::vector<Field> fields = {{"method", {call.method}}, {"caller", {call.caller}}};
  if (!call.program.empty()) fields.push_back({"program", {call.program}});
  AppendDeed("call", std::move(fields), call.user_uuid, call.user_id, call.result, call.message);
}

void Audit::NoteKeeper(const KeeperNote& note) {
  AppendDeed("keeper", {}, note.user_uuid, note.user_id, note.result, note.message);
}

void Audit::AppendDeed(const std::string& type, std::vector<Field> fields,
                       const std::string& user_uuid, const std::string& user_id,
                       std::optional<int> result, const std::string& message) {
  if (!user_uuid.empty()) fields.push_back({"user_uuid", {user_uuid}});
  if (!user_id.empty()) fields.push_back({"user_id", {user_id}});
  if (result) fields.push_back(NumberField("result", *result));
  fields.push_back({"message", {message}});
  Append(type, std::move(fields));
}

void Audit::NoteRefusedLine() { NoteCommand({.name = "", .message = "refused"}); }

bool Audit::TakeFailure() {
  base::AutoLock hold(lock_);
  return std::exchange(failed_, false);
}

void Audit::Append(const std::string& type, std::vector<Field> fields) {
  fields.insert(fields.begin(), Field{"time", {UtcTime()}});
  const std::string line = JsonLine({.type = type, .attributes = std::move(fields)}, false);
  base::AutoLock hold(lock_);
  if (!file_) return;
  if (limit_.MakeRoom(line.size())) OpenFile();
  const bool good = WriteAll(file_->get(), line);
  // A full disk is reported once, not for every line that it refuses.
  if (!good && !reported_) failed_ = true;
  reported_ = !good;
}

}  // namespace gateway
