#ifndef QORN_GATEWAY_DOCTOR_USERS_H_
#define QORN_GATEWAY_DOCTOR_USERS_H_

#include "gateway/doctor_config.h"
#include "gateway/doctor_database.h"
#include "gateway/finding.h"

namespace gateway {

// Examines the stored users and friends as the database room read them.
Findings ExamineUsers(const Config& config, const Stored& stored);

}  // namespace gateway

#endif  // QORN_GATEWAY_DOCTOR_USERS_H_
