#ifndef QORN_GATEWAY_DOCTOR_REFRESH_H_
#define QORN_GATEWAY_DOCTOR_REFRESH_H_

#include <string>

#include "gateway/doctor/doctor.h"
#include "gateway/host/database_examination.h"
#include "gateway/host/finding.h"

namespace gateway {

// Whether the cloud refreshes the users' tokens. Without options.try_refresh it only says that this
// was not tried. With it the component is loaded and asks for new tokens for each user that has a
// refresh token. The cloud then invalidates the old ones, so nothing is tried when there is an
// obstacle ("" for none), such as a database that cannot store the new ones.
Findings ExamineRefresh(const DoctorOptions& options, const Stored& stored,
                        const std::string& obstacle);

}  // namespace gateway

#endif  // QORN_GATEWAY_DOCTOR_REFRESH_H_
