// What is suspicious in a base URL of the cloud.
#ifndef QORN_GATEWAY_DOCTOR_URL_H_
#define QORN_GATEWAY_DOCTOR_URL_H_

#include <string>

#include "gateway/host/finding.h"

namespace gateway {

// Marks what is suspicious; bad means that no request can be made with it. A user and password in
// the URL are removed from the finding's value.
void JudgeUrl(const std::string& url, Finding* finding);

}  // namespace gateway

#endif  // QORN_GATEWAY_DOCTOR_URL_H_
