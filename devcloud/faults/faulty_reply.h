#ifndef QORN_DEVCLOUD_FAULTS_FAULTY_REPLY_H_
#define QORN_DEVCLOUD_FAULTS_FAULTY_REPLY_H_

#include <functional>

#include "devcloud/faults/fault.h"
#include "devcloud/http/http_text.h"
#include "devcloud/http/recorded_request.h"
#include "devcloud/http/reply.h"

namespace devcloud {

// The reply that the fault makes. `normal` is called for the kinds that make the normal answer.
Reply MakeFaultyReply(const Fault& fault, const RecordedRequest& request, bool keep_alive,
                      const std::function<Answer()>& normal);

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_FAULTS_FAULTY_REPLY_H_
