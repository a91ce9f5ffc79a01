#ifndef QORN_DEVCLOUD_CONTROL_LIVE_STREAM_H_
#define QORN_DEVCLOUD_CONTROL_LIVE_STREAM_H_

#include <atomic>
#include <cstdint>
#include <string>

#include "devcloud/control/control_context.h"
#include "devcloud/http/reply.h"

namespace devcloud {

// GET /api/events: what open pages are told, as server-sent events. A stream begins with the whole
// state and the latest requests. Later, "state" is the whole state again (as GET /api/state gives
// it) and "requests" has the summaries that are new or changed. What changes while a reader is slow
// is told once, in its last form.
//
// Belongs to the network thread, except for MarkStale.
class LiveStream {
 public:
  // The context is borrowed.
  explicit LiveStream(const ControlContext& context) : context_(context) {}

  // Something but the log of requests has changed. Any thread.
  void MarkStale() { is_stale_ = true; }

  // A stream, which must not be asked after this object is gone.
  Reply Open();

 private:
  struct Seen {
    std::uint64_t state_version = 0;
    std::uint64_t log_revision = 0;
  };

  std::string Next(Seen* seen);
  // The event of what changed after this revision; sets it to the present one. "" without a change.
  std::string RequestsSince(std::uint64_t* revision);

  const ControlContext& context_;
  std::atomic<bool> is_stale_ = true;
  // Made once for all streams.
  std::string state_;
  std::uint64_t state_version_ = 0;
  std::string requests_;
  std::uint64_t requests_from_ = 0;  // what `requests_` tells lies between these two revisions
  std::uint64_t requests_to_ = 0;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_CONTROL_LIVE_STREAM_H_
