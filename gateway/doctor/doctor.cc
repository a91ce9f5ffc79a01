#include "gateway/doctor/doctor.h"

#include <curl/curl.h>

#include <algorithm>
#include <optional>

#include "gateway/doctor/cloud.h"
#include "gateway/doctor/configuration.h"
#include "gateway/doctor/refresh.h"
#include "gateway/doctor/report.h"
#include "gateway/doctor/users.h"
#include "gateway/host/database_examination.h"
#include "gateway/host/database_path.h"

namespace gateway {
namespace {

DoctorReport::Style StyleOf(const DoctorOptions& options) {
  if (options.json) return DoctorReport::Style::kJson;
  return options.color ? DoctorReport::Style::kColor : DoctorReport::Style::kText;
}

// Why refreshed tokens could not be fetched or stored; "" when they can.
std::string Obstacle(const Findings& database, const Stored& stored, const Findings& cloud) {
  if (HasBad(database) || !stored.read) {
    return "the database has to be in order first, or the new tokens are lost";
  }
  const bool answers = std::any_of(cloud.begin(), cloud.end(), [](const Finding& finding) {
    return finding.name == "cloud.account_server.answer" && finding.severity != Severity::kBad;
  });
  return answers ? "" : "the account server does not answer";
}

}  // namespace

std::optional<Severity> RunDoctor(const DoctorOptions& options, std::ostream& out) {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  DoctorReport report(out, StyleOf(options));
  std::optional<ConfigValues> config;
  report.Add("Configuration", ExamineConfig(options.config_file, &config));
  // Nothing else can be found without the configuration: it names the database and the servers.
  if (!config) return report.Finish();
  Stored stored;
  const Findings database =
      ExamineDatabase(JoinDatabasePath(ConfigValue(*config, "qorn_storage_path"),
                                       ConfigValue(*config, "account_db_path")),
                      &stored);
  report.Add("Database", database);
  const Findings cloud = ExamineCloud(*config);
  report.Add("Cloud", cloud);
  Findings users = ExamineUsers(*config, stored);
  const std::string obstacle = Obstacle(database, stored, cloud);
  for (const Finding& finding : ExamineRefresh(options, stored, obstacle)) {
    users.push_back(finding);
  }
  report.Add("Users", users);
  return report.Finish();
}

}  // namespace gateway
