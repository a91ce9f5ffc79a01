#include "gateway/program.h"

#include <curl/curl.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "base/logging.h"
#include "evt/event_manager.h"
#include "gateway/console/console.h"
#include "gateway/console/line_source.h"
#include "gateway/console/request_code.h"
#include "gateway/console/runner.h"
#include "gateway/console/terminal.h"
#include "gateway/console/views.h"
#include "gateway/doctor/doctor.h"
#include "gateway/exit_status.h"
#include "gateway/host/host.h"
#include "gateway/operations/audit.h"
#include "gateway/operations/events.h"
#include "gateway/operations/seen_ids.h"
#include "gateway/output/log_view.h"
#include "gateway/output/printer.h"
#include "gateway/process/activity.h"
#include "gateway/process/proxies.h"
#include "gateway/process/service_manager.h"
#include "gateway/process/signals.h"

namespace gateway {
namespace {

constexpr std::chrono::milliseconds kNow{0};

// If stdin, stdout or stderr is closed, the next open() would reuse its descriptor, and what is
// printed would go into that file.
void OpenStandardStreams() {
  int fd = open("/dev/null", O_RDWR);
  while (fd >= 0 && fd <= STDERR_FILENO) fd = open("/dev/null", O_RDWR);
  // The last one is above the standard streams and not needed.
  const base::ScopedFd spare(fd);
}

// Call it before any thread is started: locale and signal actions belong to the whole process.
void PrepareProcess() {
  OpenStandardStreams();
  std::signal(SIGPIPE, SIG_IGN);
  // libedit and tables measure characters by the locale; everything here is UTF-8.
  std::setlocale(LC_CTYPE, "C.UTF-8");
}

bool OnTerminal(const Options& options) {
  return !options.daemon && options.script_file.empty() && isatty(STDIN_FILENO) == 1 &&
         isatty(STDOUT_FILENO) == 1;
}

size_t TerminalColumns() {
  winsize size{};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

// Whatever their paths look like: links and "..", too. Both files exist.
bool IsOneFile(const std::string& a, const std::string& b) {
  struct stat first {};
  struct stat second {};
  return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

PrinterStyle MakeStyle(const Options& options) {
  const char* no_color = std::getenv("NO_COLOR");
  const char* terminal = std::getenv("TERM");
  const bool wanted = !options.json && (no_color == nullptr || *no_color == '\0') &&
                      terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
  PrinterStyle style;
  style.json = options.json;
  style.show_secrets = options.show_secrets;
  style.color_out = wanted && isatty(STDOUT_FILENO) == 1;
  style.color_errors = wanted && isatty(STDERR_FILENO) == 1;
  if (isatty(STDOUT_FILENO) == 1) style.columns = TerminalColumns;
  return style;
}

RunOptions MakeRunOptions(const Options& options) {
  RunOptions run;
  run.stop_at_failure = !options.keep_going;
  if (!options.script_file.empty()) {
    run.source_name = options.script_file;
  } else if (!OnTerminal(options)) {
    run.source_name = "standard input";
  }
  return run;
}

base::ScopedFd OpenInput(const Options& options) {
  if (options.script_file.empty()) return base::ScopedFd(dup(STDIN_FILENO));
  return base::ScopedFd(open(options.script_file.c_str(), O_RDONLY | O_CLOEXEC));
}

GatewayFacts MakeFacts(const Options& options, const Host& host) {
  GatewayFacts facts;
  facts.components = options.components;
  facts.config_file = options.config_file;
  facts.database = host.DatabasePath();
  facts.account_server = host.ConfigOption("account_zep_auth_url");
  facts.user_portal = host.ConfigOption("account_user_portal_url");
  facts.network_setting = host.ConfigOption("account_enable_MIRLO_network_setting");
  facts.log_file = options.log_file;
  facts.audit_file = options.audit_file;
  return facts;
}

int ExitStatusOf(std::optional<Severity> worst) {
  if (!worst) return kExitCannotStart;
  if (*worst == Severity::kBad) return kExitDoctorBad;
  return *worst == Severity::kWarning ? kExitDoctorWarnings : kExitGood;
}

// The program from its start to its end.
class Program {
 public:
  explicit Program(const Options& options)
      : options_(options),
        printer_(std::cout, std::cerr, MakeStyle(options)),
        signals_([this] { SayStopping(); }, [this] { OpenFiles(); }),
        log_view_(&printer_, OnTerminal(options) && options.log_file.empty(),
                  !options.log_file.empty()) {}

  int Run();

 private:
  void SayStopping();
  // Opens log and audit, or opens them anew. False after a line that says what cannot be opened.
  bool OpenFiles();
  bool RunConsole(const Host& host, base::ScopedFd input);
  bool ReadLines(Console* console, base::ScopedFd input);
  void Watch(std::optional<std::chrono::seconds> time);
  ConsoleServices MakeServices(const Host& host);

  const Options& options_;
  Printer printer_;
  Activity activity_;
  SeenIds seen_ids_;
  Audit audit_;
  StopSignals signals_;
  LogView log_view_;
};

void Program::SayStopping() {
  const std::string busy = activity_.Get();
  Notify("STOPPING=1");
  printer_.Error(busy.empty() ? "stopping" : "stopping: waiting for " + busy);
}

bool Program::OpenFiles() {
  bool good = true;
  if (!options_.log_file.empty() && !logging::SetLogFile(options_.log_file)) {
    printer_.Error(options_.log_file + ": cannot be opened for the log");
    good = false;
  }
  if (!options_.audit_file.empty() && !audit_.Open(options_.audit_file)) {
    printer_.Error(options_.audit_file +
                   ": cannot be opened for the audit: " + std::strerror(errno));
    good = false;
  }
  // Two writers in one file would cut each other's lines, and no reader could tell them apart.
  if (good && !options_.log_file.empty() && IsOneFile(options_.log_file, options_.audit_file)) {
    printer_.Error(options_.audit_file + ": is the log file; the audit needs one of its own");
    good = false;
  }
  return good;
}

int Program::Run() {
  base::ScopedFd input = OpenInput(options_);
  if (input.get() < 0) {
    printer_.Error(MakeRunOptions(options_).source_name +
                   ": cannot be opened: " + std::strerror(errno));
    return kExitCannotStart;
  }
  // Before components are loaded, so that their first lines are in the log.
  if (!OpenFiles()) return kExitCannotStart;
  // Before any thread that may use libcurl.
  curl_global_init(CURL_GLOBAL_DEFAULT);
  // Before the host, whose components may publish as soon as they are loaded.
  EventListener listener([this](const SeenEvent& event) {
    seen_ids_.NoteEvent(event);
    audit_.NoteEvent(event);
    printer_.Show(EventRecord(event));
    if (audit_.TakeFailure()) printer_.Error(kAuditFailure);
  });
  std::string error;
  std::unique_ptr<Host> host = Host::Start(options_.config_file, options_.components, &error);
  if (host == nullptr) {
    printer_.Error(error);
    return kExitCannotStart;
  }
  for (const std::string& fault : host->storage_faults()) printer_.Error(fault);
  Notify("READY=1");
  const bool good = RunConsole(*host, std::move(input));
  Activity::Scope scope(activity_, "the components to finish");
  if (signals_.WaitForStop(kNow)) SayStopping();
  host.reset();
  // Components publish until they are finalised; what they did must not be missing in the audit.
  evt::EventManager::GetInstance()->Flush();
  // At a terminal a person has seen what was missing; a script has no other way to know.
  if (printer_.has_failed() && good && !OnTerminal(options_)) {
    printer_.Error("not all of the output could be written");
    return kExitCommandFailed;
  }
  return good ? kExitGood : kExitCommandFailed;
}

bool Program::RunConsole(const Host& host, base::ScopedFd input) {
  if (options_.daemon) {
    while (!signals_.WaitForStop(std::chrono::hours(1))) continue;
    return true;
  }
  if (OnTerminal(options_)) NoteStoredIds(*host.accounts(), &seen_ids_);
  Console console(MakeServices(host), {&printer_, &activity_, &seen_ids_, &audit_});
  return ReadLines(&console, std::move(input));
}

bool Program::ReadLines(Console* console, base::ScopedFd input) {
  std::unique_ptr<LineSource> source;
  if (OnTerminal(options_)) {
    TypingHelp help;
    help.complete = [console](const std::string& line) { return console->Complete(line); };
    help.may_be_kept = [console](const std::string& line) { return console->MayBeKept(line); };
    source = std::make_unique<TerminalLineSource>(signals_, &printer_, std::move(help),
                                                  HistoryFile(HistoryFile::DefaultPath()));
  } else {
    source = std::make_unique<DescriptorLineSource>(std::move(input), signals_);
  }
  return RunLines(MakeRunOptions(options_), source.get(), console, &printer_);
}

void Program::Watch(std::optional<std::chrono::seconds> time) {
  const bool by_key = OnTerminal(options_);
  if (by_key && !time) printer_.Say("Watching events and log lines; press Enter to end.");
  log_view_.Follow(true);
  const auto end = std::chrono::steady_clock::now() + time.value_or(std::chrono::hours(24 * 365));
  for (bool pressed = false; !pressed;) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    if (left.count() <= 0) break;
    pollfd fds[] = {{signals_.stop_fd(), POLLIN, 0}, {by_key ? STDIN_FILENO : -1, POLLIN, 0}};
    const auto pause = std::min<std::chrono::milliseconds>(left, std::chrono::hours(1));
    if (poll(fds, 2, static_cast<int>(pause.count())) <= 0) continue;
    char line[4096];
    pressed = fds[0].revents != 0 || read(STDIN_FILENO, line, sizeof(line)) >= 0 || errno != EINTR;
  }
  log_view_.Follow(false);
}

ConsoleServices Program::MakeServices(const Host& host) {
  ConsoleServices services;
  services.accounts = host.accounts();
  services.facts = MakeFacts(options_, host);
  services.flush_events = [] { evt::EventManager::GetInstance()->Flush(); };
  services.pause = [this](std::chrono::milliseconds time) { return signals_.WaitForStop(time); };
  services.request_code = [this, &host](const std::string& user, std::string* code,
                                        std::string* error) {
    return RequestCode(
        host.ConfigOption("account_zep_auth_url"), user,
        [this] { return signals_.WaitForStop(kNow); }, code, error);
  };
  services.watch = [this](std::optional<std::chrono::seconds> time) { Watch(time); };
  return services;
}

}  // namespace

int RunGateway(const Options& options) {
  PrepareProcess();
  if (options.doctor.wanted) {
    DoctorOptions doctor = options.doctor;
    doctor.color = MakeStyle(options).color_out;
    // Before ForgetProxies: the doctor reports proxy variables.
    const std::optional<Severity> worst = RunDoctor(doctor, std::cout);
    if (!worst) std::cerr << "qorn-gateway: not all of the output could be written\n";
    return ExitStatusOf(worst);
  }
  ForgetProxies();
  return Program(options).Run();
}

}  // namespace gateway
