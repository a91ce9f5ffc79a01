#include "devcloud/faults/faulty_reply.h"

namespace devcloud {
namespace {

Answer MakeStatus(const Fault& fault) {
  Answer answer{.status = fault.status == 0 ? 500 : fault.status,
                .body = fault.body,
                .header_lines = fault.header_lines};
  if (!fault.content_type.empty()) answer.content_type = fault.content_type;
  if (fault.body.empty()) answer.body = "A fault made this answer.\n";
  return answer;
}

Answer MakeBody(const Fault& fault) {
  Answer answer{
      .content_type = fault.content_type, .body = fault.body, .header_lines = fault.header_lines};
  if (answer.body.size() < fault.bytes) answer.body.resize(fault.bytes, 'x');
  return answer;
}

Answer MakeRedirect(const Fault& fault, const RecordedRequest& request) {
  Answer answer{.status = fault.status == 0 ? 302 : fault.status,
                .header_lines = fault.header_lines};
  answer.header_lines.push_back("Location: " +
                                (fault.location.empty() ? request.target : fault.location));
  return answer;
}

}  // namespace

Reply MakeFaultyReply(const Fault& fault, const RecordedRequest& request, bool keep_alive,
                      const std::function<Answer()>& normal) {
  using Delivery = Reply::Delivery;
  switch (fault.kind) {
    case Fault::Kind::kStatus:
      return {Serialize(MakeStatus(fault), keep_alive), Delivery::kWhole};
    case Fault::Kind::kBody:
      return {Serialize(MakeBody(fault), keep_alive), Delivery::kWhole};
    case Fault::Kind::kRaw:
      // Only a close can end a reply that may have no length of its own.
      return {fault.body, Delivery::kClose};
    // These two make the normal answer first: the request takes effect although the client never
    // learns of it.
    case Fault::Kind::kResetAfter:
      return {Serialize(normal(), keep_alive).substr(0, fault.bytes), Delivery::kReset};
    case Fault::Kind::kTruncateAfter:
      return {Serialize(normal(), keep_alive).substr(0, fault.bytes), Delivery::kClose};
    case Fault::Kind::kStall:
      return {"", Delivery::kStall};
    case Fault::Kind::kDrip:
      return {Serialize(normal(), keep_alive), Delivery::kDrip};
    case Fault::Kind::kRedirect:
      return {Serialize(MakeRedirect(fault, request), keep_alive), Delivery::kWhole};
  }
  return {Serialize(normal(), keep_alive), Delivery::kWhole};
}

}  // namespace devcloud
