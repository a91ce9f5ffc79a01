// `qorn-gateway doctor`: examines configuration, database, cloud and users, and says what to do.
// One file for each thing that is examined; none of them writes output or changes anything.
#ifndef QORN_GATEWAY_DOCTOR_DOCTOR_H_
#define QORN_GATEWAY_DOCTOR_DOCTOR_H_

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "gateway/host/finding.h"

namespace gateway {

struct DoctorOptions {
  bool wanted = false;  // the command line asks for the doctor
  std::string config_file;
  std::vector<std::string> components;  // used with try_refresh alone
  bool json = false;
  bool color = false;  // of the text
  bool try_refresh = false;
};

// Writes the findings to `out` and returns the worst severity among them, or nothing when they
// could not all be written. Changes nothing, unless try_refresh asks for new tokens for each user.
// Waits at most 20 seconds for each of the cloud's two servers. Call it once in a process, before
// other threads are started.
std::optional<Severity> RunDoctor(const DoctorOptions& options, std::ostream& out);

}  // namespace gateway

#endif  // QORN_GATEWAY_DOCTOR_DOCTOR_H_
