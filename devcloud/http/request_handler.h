#ifndef QORN_DEVCLOUD_HTTP_REQUEST_HANDLER_H_
#define QORN_DEVCLOUD_HTTP_REQUEST_HANDLER_H_

#include "devcloud/http/recorded_request.h"
#include "devcloud/http/reply.h"

namespace devcloud {

// What a session does with its requests. Called on the network thread.
class RequestHandler {
 public:
  virtual ~RequestHandler() = default;

  // Once for each request, also for one that is not HTTP. Gives it its number and time.
  virtual void Record(RecordedRequest* request) = 0;

  // After Record; again for a request that was stalled.
  virtual Reply Respond(const RecordedRequest& request, bool keep_alive) = 0;

  // Before the reply goes out.
  virtual void RecordReply(const RecordedRequest& request, const Reply& reply) = 0;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_HTTP_REQUEST_HANDLER_H_
