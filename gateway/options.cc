#include "gateway/options.h"

#include <CLI/CLI.hpp>
#include <filesystem>

#include "base/file_path.h"
#include "base/path_service.h"
#include "gateway/maintenance/backup.h"
#include "gateway/maintenance/restore.h"
#include "gateway/maintenance/retire.h"
#include "gateway/maintenance/support_report.h"
#include "gateway/process/exit_status.h"

namespace gateway {
namespace {

constexpr int kMostKeepHours = 365 * 24;
constexpr uint64_t kMostLogLimit = uint64_t{1} << 40;

void Declare(CLI::App* app, Options* options) {
  app->add_option("--config", options->config_file,
                  "Configuration (default: config.xml beside the program, else " QORN_CONFIG_FILE
                  ")")
      ->type_name("FILE");
  app->add_option("--component", options->components,
                  "Component to load; may be given several times (default: libqorn_account.so in "
                  "../lib beside the program, else in " QORN_LIBDIR "/qorn)")
      ->type_name("FILE")
      ->allow_extra_args(false);
  app->add_option("--log", options->log_file,
                  "Append the log to this file (default: standard error)")
      ->type_name("FILE");
  app->add_option("--audit", options->audit_file,
                  "Append one JSON object for each event and each command to this file")
      ->type_name("FILE");
  app->add_option(
         "--log-limit", options->log_limit,
         "Size at which log or audit becomes FILE.old and a new one begins, such as 500KiB "
         "(default: 8MiB; 0: no limit)")
      ->transform(CLI::Validator(CLI::AsSizeValue(false)).description(""))
      ->check(CLI::Range(uint64_t{0}, kMostLogLimit).description(""))
      ->type_name("SIZE");
  CLI::Option* script = app->add_option("--script", options->script_file,
                                        "Run the commands of this file (default: standard input)")
                            ->type_name("FILE");
  app->add_flag("--daemon", options->daemon, "Read no commands; run until a signal")
      ->excludes(script);
  app->add_option("--bus", options->bus_address,
                  "Offer the accounts to other processes on D-Bus: system, session or an address")
      ->type_name("ADDRESS");
  app->add_option("--keep-tokens", options->keep_tokens_hours,
                  "Refresh each user's tokens every so many hours (default: 0, never)")
      ->type_name("HOURS")
      ->check(CLI::Range(0, kMostKeepHours));
  app->add_flag("--metrics", options->metrics,
                "Count the calls of the console and of all components, too, not only those from "
                "D-Bus");
  app->add_flag("--json", options->json, "Write one JSON object a line");
  app->add_flag("--keep-going", options->keep_going,
                "Go on after a command of a script or a pipe failed");
  app->add_flag("--show-secrets", options->show_secrets,
                "Show tokens and authorisation codes in full");
  app->set_version_flag("--version", "qorn-gateway " QORN_VERSION);
  app->footer(
      "Commands are read one a line; \"help\" lists them.\n"
      "Signals: SIGINT and SIGTERM stop the gateway in order, a second one at once; SIGHUP opens "
      "log\n"
      "and audit anew.\n"
      "Exit status: 0 good, also when stopped by SIGINT or SIGTERM; 1 a command of a script or a\n"
      "pipe failed, or the output could not be written; 2 the program cannot start.");
}

void DeclareDoctor(CLI::App* app, Options* options) {
  CLI::App* const doctor = app->add_subcommand(
      "doctor", "Examine configuration, database, cloud and users; change nothing");
  doctor->add_option("--config", options->config_file, "As without doctor")->type_name("FILE");
  doctor->add_option("--component", options->components, "As without doctor; for --try-refresh")
      ->type_name("FILE")
      ->allow_extra_args(false);
  doctor->add_flag("--json", options->json, "One JSON object a line");
  doctor->add_flag("--try-refresh", options->doctor.try_refresh,
                   "Get new tokens for each user: changes the database and the cloud");
  doctor->callback([options] { options->doctor.wanted = true; });
  doctor->footer(
      "No gateway has to run. Exit status: 0 all is good; 1 warnings; 3 something is bad;\n"
      "2 wrong option, or the findings cannot be written.");
}

CLI::App* DeclareMaintenance(CLI::App* app, Options* options, const char* name,
                             const char* description, decltype(Options::maintain) maintain) {
  CLI::App* const command = app->add_subcommand(name, description);
  command->add_option("--config", options->config_file, "As without " + command->get_name())
      ->type_name("FILE");
  command->callback([options, maintain] { options->maintain = maintain; });
  command->footer(
      "Exit status: 0 done; 1 not done, and one line on standard error says why; 2 wrong option.");
  return command;
}

void DeclareBackups(CLI::App* app, Options* options) {
  MaintenanceOptions& maintenance = options->maintenance;
  CLI::App* const backup = DeclareMaintenance(
      app, options, "backup", "Copy the database into an archive; the gateway may run meanwhile",
      &RunBackup);
  backup->add_option("COPY", maintenance.file, "The archive; -: standard output")->required();
  backup->add_flag("--force", maintenance.force, "Replace an existing file");
  backup->add_flag("--with-tokens", maintenance.with_tokens,
                   "Copy the users' tokens too; no gateway may run");
  CLI::App* const restore = DeclareMaintenance(
      app, options, "restore", "Replace the database by the one of an archive; no gateway may run",
      &RunRestore);
  restore->add_option("COPY", maintenance.file, "The archive; -: standard input")->required();
}

void DeclareLogs(CLI::App* command, MaintenanceOptions* maintenance) {
  command
      ->add_option("--log", maintenance->log_file,
                   "The gateway's log (default with the installed configuration: " QORN_LOG_FOLDER
                   "gateway.log)")
      ->type_name("FILE");
  command
      ->add_option("--audit", maintenance->audit_file,
                   "The gateway's audit (default with the installed configuration: " QORN_LOG_FOLDER
                   "audit.log)")
      ->type_name("FILE");
}

void DeclareRetire(CLI::App* app, Options* options) {
  CLI::App* const retire = DeclareMaintenance(
      app, options, "retire",
      "Remove all users from cloud and database, and the files that name them; no gateway may run",
      &RunRetire);
  retire->add_option("--component", options->components, "As without retire")
      ->type_name("FILE")
      ->allow_extra_args(false);
  retire->add_flag("--local", options->maintenance.local, "Leave the cloud as it is");
  DeclareLogs(retire, &options->maintenance);
  retire->footer(
      "Exit status: 0 done; 1 not all of it: lines on standard error say what is left, also in the "
      "cloud;\n2 wrong option. It can be run again.");
}

void DeclareReport(CLI::App* app, Options* options) {
  MaintenanceOptions& maintenance = options->maintenance;
  CLI::App* const report =
      DeclareMaintenance(app, options, "report",
                         "Write one text for a support case, without private values", &RunReport);
  report->add_option("OUTPUT", maintenance.file, "The text; -: standard output")
      ->capture_default_str();
  report->add_flag("--force", maintenance.force, "Replace an existing file");
  DeclareLogs(report, &maintenance);
  report
      ->add_option("--bus", maintenance.bus_address,
                   "Where a running gateway is asked: system, session or an address")
      ->type_name("ADDRESS")
      ->capture_default_str();
  report->footer(
      "Exit status: 0 written; 1 cannot be written; 2 wrong option; 3 not written, since a "
      "private\n"
      "value would still be in it.");
}

// In a build tree everything lies beside the program, installed it lies in the system's folders.
std::string BesideProgramOr(const std::string& beside, const std::string& installed) {
  FilePath folder;
  PathService::Get(base::kDirExe, &folder);
  std::error_code ignored;
  const std::filesystem::path program(folder.value());
  const bool built = std::filesystem::exists(program / beside, ignored);
  return (program / (built ? beside : installed)).lexically_normal().string();
}

// Log, audit and bus may also stand before the command that uses them.
void TakeOptionsBeforeCommand(Options* options) {
  MaintenanceOptions& maintenance = options->maintenance;
  if (maintenance.log_file.empty()) maintenance.log_file = options->log_file;
  if (maintenance.audit_file.empty()) maintenance.audit_file = options->audit_file;
  if (!options->bus_address.empty()) maintenance.bus_address = options->bus_address;
}

void FillDefaults(Options* options) {
  if (options->config_file.empty()) {
    options->config_file = BesideProgramOr("config.xml", QORN_CONFIG_FILE);
  }
  if (options->config_file == QORN_CONFIG_FILE) {
    MaintenanceOptions& maintenance = options->maintenance;
    if (maintenance.log_file.empty()) maintenance.log_file = QORN_LOG_FOLDER "gateway.log";
    if (maintenance.audit_file.empty()) maintenance.audit_file = QORN_LOG_FOLDER "audit.log";
  }
  if (options->components.empty()) {
    options->components.push_back(
        BesideProgramOr("../lib/libqorn_account.so", QORN_LIBDIR "/qorn/libqorn_account.so"));
  }
  options->metrics_component =
      BesideProgramOr("../lib/libqorn_metrics.so", QORN_LIBDIR "/qorn/libqorn_metrics.so");
}

}  // namespace

std::optional<int> ParseOptions(int argc, const char* const* argv, std::ostream& out,
                                std::ostream& err, Options* options) {
  CLI::App app("Hosts the account component of a home gateway.", "qorn-gateway");
  Declare(&app, options);
  app.require_subcommand(0, 1);
  DeclareDoctor(&app, options);
  DeclareBackups(&app, options);
  DeclareRetire(&app, options);
  DeclareReport(&app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& wanted) {  // --help or --version
    app.exit(wanted, out, err);
    return kExitGood;
  } catch (const CLI::ParseError& wrong) {
    err << "qorn-gateway: " << wrong.what() << "; --help lists the options\n";
    return kExitCannotStart;
  }
  TakeOptionsBeforeCommand(options);
  // The doctor looks at the same files as the gateway would.
  FillDefaults(options);
  options->doctor.config_file = options->config_file;
  options->doctor.json = options->json;
  options->doctor.components = options->components;
  options->maintenance.config_file = options->config_file;
  options->maintenance.components = options->components;
  return std::nullopt;
}

}  // namespace gateway
