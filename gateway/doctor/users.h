#ifndef QORN_GATEWAY_DOCTOR_USERS_H_
#define QORN_GATEWAY_DOCTOR_USERS_H_

#include "gateway/doctor/configuration.h"
#include "gateway/host/database_examination.h"
#include "gateway/host/finding.h"

namespace gateway {

// Examines the stored users and friends that ExamineDatabase read.
Findings ExamineUsers(const ConfigValues& config, const Stored& stored);

}  // namespace gateway

#endif  // QORN_GATEWAY_DOCTOR_USERS_H_
