// The program's command line.
#ifndef QORN_GATEWAY_OPTIONS_H_
#define QORN_GATEWAY_OPTIONS_H_

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "gateway/doctor/doctor.h"
#include "gateway/maintenance/options.h"

namespace gateway {

struct Options {
  std::string config_file;
  std::vector<std::string> components;
  std::string log_file;    // "": the log goes to standard error
  std::string audit_file;  // "": no audit
  // Of log and audit each, in bytes; 0: none.
  uint64_t log_limit = uint64_t{8} * 1024 * 1024;
  std::string script_file;    // "": lines come from standard input
  bool daemon = false;        // no lines are read
  std::string bus_address;    // "system", "session" or a D-Bus address; "": no service on a bus
  int keep_tokens_hours = 0;  // between two refreshes of a user's tokens; 0: none
  bool metrics = false;       // all calls of the process are counted, not the bus's alone
  std::string metrics_component;
  bool json = false;
  bool keep_going = false;
  bool show_secrets = false;
  DoctorOptions doctor;
  // What to do instead of running: null, or one of gateway/maintenance/.
  int (*maintain)(const MaintenanceOptions&, std::ostream& out, std::ostream& err) = nullptr;
  MaintenanceOptions maintenance;
};

// Fills `options`, with defaults found from the program's own folder. An exit status when the
// program has nothing more to do: after --help and --version, which write to `out`, or after a
// wrong option, which gets one line on `err`.
std::optional<int> ParseOptions(int argc, const char* const* argv, std::ostream& out,
                                std::ostream& err, Options* options);

}  // namespace gateway

#endif  // QORN_GATEWAY_OPTIONS_H_
