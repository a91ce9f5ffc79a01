// The audit file: who did what, when, with which result.
#ifndef QORN_GATEWAY_OPERATIONS_AUDIT_H_
#define QORN_GATEWAY_OPERATIONS_AUDIT_H_

#include <optional>
#include <string>
#include <vector>

#include "base/lock.h"
#include "base/scoped_fd.h"
#include "base/thread_annotations.h"
#include "gateway/operations/events.h"
#include "gateway/output/records.h"

namespace gateway {

// What is said once a line was lost.
constexpr char kAuditFailure[] =
    "the audit file cannot be written; its lines are lost until it can";

// Appends one JSON object a line for each event and each console command; never a secret.
// Thread-safe.
class Audit {
 public:
  // Keeps nothing until Open was called.
  Audit() = default;
  Audit(const Audit&) = delete;
  Audit& operator=(const Audit&) = delete;

  // Opens the file, made with mode 0600 when it is not there; called again for the same path it
  // opens the file anew, as after a rotation. False, with errno set, when that fails: lines go on
  // to where they went.
  bool Open(const std::string& path);

  void NoteEvent(const SeenEvent& event);

  struct Command {
    std::string name;
    std::string user_uuid;      // "" when the command named none
    std::string user_id;        // likewise
    std::optional<int> result;  // none when the command answers no result or was not run
    std::string message;
  };
  void NoteCommand(const Command& command);

  // True once after a line could not be written (a full disk); that line is lost.
  bool TakeFailure();

 private:
  void Append(const std::string& type, std::vector<Field> fields);

  base::Lock lock_;
  std::optional<base::ScopedFd> file_ GUARDED_BY(lock_);
  bool failed_ GUARDED_BY(lock_) = false;
  bool reported_ GUARDED_BY(lock_) = false;
};

}  // namespace gateway

#endif  // QORN_GATEWAY_OPERATIONS_AUDIT_H_
