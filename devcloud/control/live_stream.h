#ifndef QORN_DEVCLOUD_CONTROL_LIVE_STREAM_H_
#define QORN_DEVCLOUD_CONTROL_LIVE_STREAM_H_

#include <atomic>
#include <cstdint>
#include <string>

#include "devcloud/control/control_context.h"
#include "devcloud/http/reply.h"

namespace devcloud {

// GET /api/events: the server-sent events that keep open pages current. A stream begins with the
// whole state and the latest requests. Later, a "state" event has the whole state again (as GET
// /api/state returns it), and a "requests" event the summaries that are new or changed. A slow
// reader gets only the latest version of what changed meanwhile.
//
// Network thread only, except for MarkStale.
class LiveStream {
 public:
  // The context is borrowed.
  explicit LiveStream(const ControlContext& context) : context_(context) {}

  // Something other than the log of requests has changed. Any thread.
  void MarkStale() { is_stale_ = true; }

  // Opens a stream. Its `next` must not be called after this object is destroyed.
  Reply Open();

 private:
  // How far a reader has got.
  struct Position {
    std::uint64_t state_version = 0;
    std::uint64_t log_revision = 0;
  };

  // The events after the position, which moves to the present; "" if nothing has changed.
  std::string Next(Position* position);
  // The same for the log of requests alone.
  std::string RequestsSince(std::uint64_t* revision);

  const ControlContext& context_;
  std::atomic<bool> is_stale_ = true;
  // The latest events, built once for all streams.
  std::string state_;
  std::uint64_t state_version_ = 0;
  std::string requests_;
  std::uint64_t requests_from_ = 0;  // `requests_` covers the changes between these two revisions
  std::uint64_t requests_to_ = 0;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_CONTROL_LIVE_STREAM_H_
