#ifndef QORN_GATEWAY_DOCTOR_CLOUD_H_
#define QORN_GATEWAY_DOCTOR_CLOUD_H_

#include "gateway/doctor/configuration.h"
#include "gateway/host/finding.h"

namespace gateway {

// Sends both servers a GET request for their base URL, which changes nothing there.
Findings ExamineCloud(const ConfigValues& config);

}  // namespace gateway

#endif  // QORN_GATEWAY_DOCTOR_CLOUD_H_
