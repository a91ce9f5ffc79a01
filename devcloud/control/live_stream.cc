#include "devcloud/control/live_stream.h"

#include <memory>
#include <utility>

#include "devcloud/control/state_json.h"

namespace devcloud {
namespace {

constexpr char kHead[] =
    "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Type: text/event-stream\r\n"
    "Cache-Control: no-store\r\n\r\nretry: 1000\n\n";

std::string Event(const char* name, const std::string& data) {
  return std::string("event: ") + name + "\ndata: " + data + "\n\n";
}

}  // namespace

Reply LiveStream::Open() {
  Reply reply{.bytes = kHead, .delivery = Reply::Delivery::kStream};
  reply.next = [this, position = std::make_shared<Position>()] { return Next(position.get()); };
  return reply;
}

std::string LiveStream::Next(Position* position) {
  // Cleared before the state is read: a change in between marks it again and is not lost.
  if (is_stale_.exchange(false)) {
    std::string state = StateJson(context_, -1);
    // Most calls of MarkStale come from requests that changed nothing a page shows.
    if (state != state_) ++state_version_;
    state_ = std::move(state);
  }
  std::string events;
  if (std::exchange(position->state_version, state_version_) != state_version_) {
    events += Event("state", state_);
  }
  return events + RequestsSince(&position->log_revision);
}

std::string LiveStream::RequestsSince(std::uint64_t* revision) {
  const std::uint64_t present = context_.log.revision();
  const std::uint64_t from = std::exchange(*revision, present);
  if (from == present) return "";
  if (from != requests_from_ || present != requests_to_) {
    const RequestChanges changes = context_.log.ChangesSince(from);
    requests_ = Event("requests", RequestChangesJson(changes));
    requests_from_ = from;
    // More requests may have arrived since `present` was read.
    *revision = requests_to_ = changes.revision;
  }
  return requests_;
}

}  // namespace devcloud
