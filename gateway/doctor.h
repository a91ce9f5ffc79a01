// `qorn-gateway doctor`: examines configuration, database, cloud and users.
#ifndef QORN_GATEWAY_DOCTOR_H_
#define QORN_GATEWAY_DOCTOR_H_

#include <ostream>
#include <string>
#include <vector>

namespace gateway {

// Exit statuses; 0 when all findings are good, kExitCannotStart when they cannot be written.
constexpr int kExitDoctorWarnings = 1;
constexpr int kExitDoctorBad = 3;

struct DoctorOptions {
  bool wanted = false;  // the command line asks for the doctor
  std::string config_file;
  std::vector<std::string> components;  // used with try_refresh alone
  bool json = false;
  bool color = false;  // of the text
  bool try_refresh = false;
};

// Writes the findings to `out` and returns the exit status. Changes
// nothing, unless try_refresh asks for new tokens for each user. Waits for a cloud that does not
// answer for 20 seconds at most for each of its two servers. Once in a process, before other
// threads.
int RunDoctor(const DoctorOptions& options, std::ostream& out);

}  // namespace gateway

#endif  // QORN_GATEWAY_DOCTOR_H_
