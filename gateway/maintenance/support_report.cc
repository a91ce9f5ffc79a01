#include "gateway/maintenance/support_report.h"

#include <curl/curl.h>
#include <sqlite3.h>
#include <sys/utsname.h>

#include <ctime>
#include <deque>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "gateway/doctor/doctor.h"
#include "gateway/host/database_path.h"
#include "gateway/host/database_reader.h"
#include "gateway/maintenance/files.h"
#include "gateway/maintenance/manifest.h"
#include "gateway/maintenance/private_values.h"
#include "gateway/maintenance/redaction.h"
#include "gateway/maintenance/running_gateway.h"
#include "gateway/output/clock_text.h"
#include "gateway/output/text.h"
#include "gateway/process/exit_status.h"
#include "runtime/config_file.h"

namespace gateway {
namespace {

constexpr size_t kLastLines = 2000;

using Config = std::map<std::string, std::string>;

std::string Versions() {
  utsname system{};
  uname(&system);
  return "qorn-gateway " QORN_VERSION "\nSQLite " + std::string(sqlite3_libversion()) + "\n" +
         curl_version() + "\n" + system.sysname + " " + system.release + " " + system.machine +
         "\n";
}

std::string Configuration(const std::string& file, const std::vector<runtime::ConfigEntry>& all) {
  std::string text = file + "\n";
  for (const runtime::ConfigEntry& entry : all) {
    text += entry.key + ": " + Visible(entry.value) + "\n";
  }
  return text;
}

std::string DoctorText(const MaintenanceOptions& options) {
  DoctorOptions doctor;
  doctor.config_file = options.config_file;
  std::ostringstream text;
  RunDoctor(doctor, text);
  return text.str();
}

std::string DatabaseSizes(const std::string& database) {
  if (database.empty() || !Exists(database)) return "there is none\n";
  DatabaseReader reader(database, IsWriteAhead(database), 2000);
  std::string text;
  for (const auto& [name, query] :
       std::map<const char*, const char*>{{"users", "SELECT count(*) FROM Users"},
                                          {"friends", "SELECT count(*) FROM Friends"},
                                          {"pages", "PRAGMA page_count"},
                                          {"free pages", "PRAGMA freelist_count"},
                                          {"bytes of a page", "PRAGMA page_size"}}) {
    text += std::string(name) + ": " + std::to_string(reader.Count(query)) + "\n";
  }
  return text;
}

// The last lines of a file; "" for none.
std::string LastLines(const std::string& file) {
  std::deque<std::string> lines;
  std::error_code none;
  if (!std::filesystem::is_regular_file(file, none)) return "";
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
    if (lines.size() > kLastLines) lines.pop_front();
  }
  std::string text;
  for (const std::string& line : lines) text += Visible(line) + "\n";
  return text;
}

std::string Part(const std::string& title, const std::string& text) {
  return "== " + title + "\n" + text + "\n";
}

}  // namespace

int RunReport(const MaintenanceOptions& options, std::ostream& /*out*/, std::ostream& err) {
  std::vector<runtime::ConfigEntry> entries;
  std::string error;
  Config config;
  // The report says so too: a configuration that cannot be read may be the case.
  if (!runtime::ReadConfigEntries(options.config_file, &entries, &error)) {
    err << "qorn-gateway: " << error << "\n";
  }
  Redaction redaction;
  for (const runtime::ConfigEntry& entry : entries) {
    config.emplace(entry.key, entry.value);
    AddPrivateConfig({{entry.key, entry.value}}, &redaction);
  }
  const std::string database =
      JoinDatabasePath(config["qorn_storage_path"], config["account_db_path"]);
  if (!database.empty() && Exists(database)) AddPrivateRows(database, &redaction);
  const std::string audit = LastLines(options.audit_file);
  AddAudited(audit, &redaction);
  const std::string text = "qorn-gateway report, " + UtcText(std::time(nullptr)) + "\n\n" +
                           Part("Versions", Versions()) +
                           Part("Configuration", Configuration(options.config_file, entries)) +
                           Part("Doctor", DoctorText(options)) +
                           Part("Running gateway", DescribeRunningGateway(options.bus_address)) +
                           Part("Database", DatabaseSizes(database)) +
                           Part("Log", LastLines(options.log_file)) + Part("Audit", audit);
  redaction.AddPatterns(text);
  const std::string redacted = redaction.Redact(text);
  if (!redaction.IsClean(redacted)) {
    err << "qorn-gateway: not written: a private value would still be in the report\n";
    return kExitStillPrivate;
  }
  if (WriteWhole(options.file, redacted, options.force, &error)) return kExitGood;
  err << "qorn-gateway: " << error << "\n";
  return kExitCommandFailed;
}

}  // namespace gateway
