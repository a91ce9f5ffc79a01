// Keeps a gateway's data over the years: backup, restore, retirement and a report for support. Each
// is a sub-command of the program, and each file here does one part of one.
#ifndef QORN_GATEWAY_MAINTENANCE_OPTIONS_H_
#define QORN_GATEWAY_MAINTENANCE_OPTIONS_H_

#include <string>
#include <vector>

namespace gateway {

struct MaintenanceOptions {
  std::string config_file;
  std::vector<std::string> components;  // of retire
  std::string file = "-";               // the copy, or the report; "-": a standard stream
  bool force = false;                   // replace an existing file
  bool with_tokens = false;
  bool local = false;  // leave the cloud alone
  std::string log_file;
  std::string audit_file;
  std::string bus_address = "system";  // where report asks a running gateway
};

}  // namespace gateway

#endif  // QORN_GATEWAY_MAINTENANCE_OPTIONS_H_
