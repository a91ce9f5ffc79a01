#include "gateway/doctor.h"

#include <curl/curl.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>

#include "gateway/doctor_cloud.h"
#include "gateway/doctor_config.h"
#include "gateway/doctor_database.h"
#include "gateway/doctor_refresh.h"
#include "gateway/doctor_report.h"
#include "gateway/doctor_users.h"

namespace gateway {
namespace {

DoctorReport::Style StyleOf(const DoctorOptions& options) {
  if (options.json) return DoctorReport::Style::kJson;
  const char* const no_colour = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  const bool colour = isatty(STDOUT_FILENO) == 1 && (no_colour == nullptr || *no_colour == '\0') &&
                      terminal != nullptr && std::string(terminal) != "dumb";
  return colour ? DoctorReport::Style::kColour : DoctorReport::Style::kText;
}

}  // namespace

int RunDoctor(const DoctorOptions& options, std::ostream& out) {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  DoctorReport report(out, StyleOf(options));
  std::optional<Config> config;
  report.Add("Configuration", ExamineConfig(options.config_file, &config));
  if (!config) return report.Finish();
  Stored stored;
  const Findings database = ExamineDatabase(*config, &stored);
  report.Add("Database", database);
  report.Add("Cloud", ExamineCloud(*config));
  Findings users = ExamineUsers(*config, stored);
  for (const Finding& finding : ExamineRefresh(options, stored, !HasBad(database))) {
    users.push_back(finding);
  }
  report.Add("Users", users);
  return report.Finish();
}

}  // namespace gateway
