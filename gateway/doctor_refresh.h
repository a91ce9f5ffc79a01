#ifndef QORN_GATEWAY_DOCTOR_REFRESH_H_
#define QORN_GATEWAY_DOCTOR_REFRESH_H_

#include "gateway/doctor.h"
#include "gateway/doctor_database.h"
#include "gateway/doctor_report.h"

namespace gateway {

// Whether the cloud refreshes the users' tokens. Without options.try_refresh it only says that this
// was not tried. With it the component is loaded and asks for new tokens for each user that has a
// refresh token; the cloud then forgets the old ones, so nothing is tried unless `sound` says that
// the new ones can be stored.
Findings ExamineRefresh(const DoctorOptions& options, const Stored& stored, bool sound);

}  // namespace gateway

#endif  // QORN_GATEWAY_DOCTOR_REFRESH_H_
