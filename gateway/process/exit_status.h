// The program's exit statuses, which scripts and service managers read: never renumber.
#ifndef QORN_GATEWAY_PROCESS_EXIT_STATUS_H_
#define QORN_GATEWAY_PROCESS_EXIT_STATUS_H_

namespace gateway {

constexpr int kExitGood = 0;
constexpr int kExitCommandFailed = 1;  // or the output could not be written
constexpr int kExitCannotStart = 2;

// Of `qorn-gateway doctor`, which ends with kExitGood when all is good and with kExitCannotStart
// when its findings cannot be written.
constexpr int kExitDoctorWarnings = 1;
constexpr int kExitDoctorBad = 3;

// Of `qorn-gateway report`: it was not written, since a private value would be in it.
constexpr int kExitStillPrivate = 3;

}  // namespace gateway

#endif  // QORN_GATEWAY_PROCESS_EXIT_STATUS_H_
