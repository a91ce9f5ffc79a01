#ifndef QORN_GATEWAY_DOCTOR_CLOUD_H_
#define QORN_GATEWAY_DOCTOR_CLOUD_H_

#include "gateway/doctor_config.h"
#include "gateway/doctor_report.h"

namespace gateway {

// Asks both servers for their base URL with GET, which changes nothing there.
Findings ExamineCloud(const Config& config);

// The cloud's clock minus this machine's is `seconds`.
void JudgeClock(long seconds, Finding* finding);

}  // namespace gateway

#endif  // QORN_GATEWAY_DOCTOR_CLOUD_H_
