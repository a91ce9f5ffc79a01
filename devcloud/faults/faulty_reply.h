#ifndef QORN_DEVCLOUD_FAULTS_FAULTY_REPLY_H_
#define QORN_DEVCLOUD_FAULTS_FAULTY_REPLY_H_

#include <functional>

#include "devcloud/faults/fault.h"
#include "devcloud/http/http_text.h"
#include "devcloud/http/recorded_request.h"
#include "devcloud/http/reply.h"

namespace devcloud {

// The reply to a request to which the fault applies. Calls `normal` only for the kinds that send
// the normal answer or a part of it.
Reply MakeFaultyReply(const Fault& fault, const RecordedRequest& request, bool keep_alive,
                      const std::function<Answer()>& normal);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_FAULTS_FAULTY_REPLY_H_
