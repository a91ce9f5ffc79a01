#ifndef QORN_GATEWAY_DOCTOR_CLOUD_H_
#define QORN_GATEWAY_DOCTOR_CLOUD_H_

#include "gateway/doctor/configuration.h"
#include "gateway/host/finding.h"

namespace gateway {

// Asks both servers for their base URL with GET, which changes nothing there.
Findings ExamineCloud(const Config& config);

}  // namespace gateway

#endif  // QORN_GATEWAY_DOCTOR_CLOUD_H_
