// The audit file: who did what, when, with which result.
#ifndef QORN_GATEWAY_OPERATIONS_AUDIT_H_
#define QORN_GATEWAY_OPERATIONS_AUDIT_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/lock.h"
#include "base/scoped_fd.h"
#include "base/thread_annotations.h"
#include "gateway/operations/events.h"
#include "gateway/output/file_limit.h"
#include "gateway/output/records.h"

namespace gateway {

// Shown once after a line was lost.
constexpr char kAuditFailure[] =
    "the audit file cannot be written; its lines are lost until it can";

// Appends one JSON object a line for each event, each console command and each call from the bus
// that changes something; never a secret. Thread-safe.
class Audit {
 public:
  // Keeps nothing until Open was called. `limit`: as in FileLimit, in bytes.
  explicit Audit(uint64_t limit = 0) : limit_(limit) {}
  Audit(const Audit&) = delete;
  Audit& operator=(const Audit&) = delete;

  // Opens the file, and creates it with mode 0600 if it is missing. Call it again to reopen the
  // file after a rotation. False, with errno set, when that fails; then lines still go to the old
  // file.
  bool Open(const std::string& path);

  void NoteEvent(const SeenEvent& event);

  struct CommandNote {
    std::string name;
    std::string user_uuid = {};      // "" when the command named none
    std::string user_id = {};        // likewise
    std::optional<int> result = {};  // none when the command answers no result or was not run
    std::string message;
  };
  void NoteCommand(const CommandNote& command);
  // A call from outside the process that was refused, or may have changed something.
  struct CallNote {
    std::string method;
    std::string caller;   // the user's name
    std::string program;  // "" when it is not known
    std::string user_uuid = {};
    std::string user_id = {};
    std::optional<int> result = {};  // none when it was refused
    std::string message;
  };
  void NoteCall(const CallNote& call);

  // What the gateway did for a user by itself.
  struct KeeperNote {
    std::string user_uuid;
    std::string user_id;
    std::optional<int> result = {};  // of the refresh, if there was one
    std::string message;
  };
  void NoteKeeper(const KeeperNote& note);

  // A line that is no command. Its words may be anything, a mistyped secret too, and are not kept.
  void NoteRefusedLine();

  // True once after a line could not be written (a full disk); that line is lost.
  bool TakeFailure();

 private:
  // Appends what was done, to whom, and with which result.
  void AppendDeed(const std::string& type, std::vector<Field> fields, const std::string& user_uuid,
                  const std::string& user_id, std::optional<int> result,
                  const std::string& message);
  void Append(const std::string& type, std::vector<Field> fields);
  bool OpenFile() EXCLUSIVE_LOCKS_REQUIRED(lock_);

  base::Lock lock_;
  FileLimit limit_;
  std::string path_ GUARDED_BY(lock_);
  std::optional<base::ScopedFd> file_ GUARDED_BY(lock_);
  bool failed_ GUARDED_BY(lock_) = false;
  bool reported_ GUARDED_BY(lock_) = false;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_OPERATIONS_AUDIT_H_
