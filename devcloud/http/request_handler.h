#ifndef QORN_DEVCLOUD_HTTP_REQUEST_HANDLER_H_
#define QORN_DEVCLOUD_HTTP_REQUEST_HANDLER_H_

#include "devcloud/http/recorded_request.h"
#include "devcloud/http/reply.h"

namespace devcloud {

// Answers the requests of all sessions. Called on the network thread.
class RequestHandler {
 public:
  virtual ~RequestHandler() = default;

  // Called once for each request, even one that is not HTTP. Sets its number and time.
  virtual void Record(RecordedRequest* request) = 0;

  // Called after Record, and again when a stalled request resumes.
  virtual Reply Respond(const RecordedRequest& request, bool keep_alive) = 0;

  // Called just before the reply is sent.
  virtual void RecordReply(const RecordedRequest& request, const Reply& reply) = 0;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_REQUEST_HANDLER_H_
