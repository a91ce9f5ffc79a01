#include "gateway/program.h"

#include <curl/curl.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "base/lock.h"
#include "base/logging.h"
#include "evt/event_manager.h"
#include "gateway/console/console.h"
#include "gateway/console/request_code.h"
#include "gateway/console/session.h"
#include "gateway/console/views.h"
#include "gateway/doctor/doctor.h"
#include "gateway/host/database_path.h"
#include "gateway/host/free_space.h"
#include "gateway/host/host.h"
#include "gateway/keeper/host_keeper.h"
#include "gateway/keeper/transfer_error.h"
#include "gateway/metrics/metrics.h"
#include "gateway/operations/audit.h"
#include "gateway/operations/event_listener.h"
#include "gateway/operations/seen_ids.h"
#include "gateway/output/file_limit.h"
#include "gateway/output/log_view.h"
#include "gateway/output/printer.h"
#include "gateway/output/style.h"
#include "gateway/process/activity.h"
#include "gateway/process/exit_status.h"
#include "gateway/process/proxies.h"
#include "gateway/process/service_manager.h"
#include "gateway/process/signals.h"
#include "gateway/process/standard_streams.h"
#include "gateway/service/bus_keys.h"
#include "gateway/service/bus_service.h"

namespace gateway {
namespace {

constexpr std::chrono::milliseconds kNow{0};

bool OnTerminal(const Options& options) { return !options.daemon && IsTyped(options.script_file); }

// Whatever their paths look like: links and "..", too. Both files exist.
bool IsOneFile(const std::string& a, const std::string& b) {
  struct stat first {};
  struct stat second {};
  return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

// What is FILE.old once FILE has reached its limit would be written over.
bool ShareFiles(const std::string& a, const std::string& b) {
  std::error_code none;
  const auto old = [&none](const std::string& path) {
    return std::filesystem::canonical(path, none).string() + ".old";
  };
  return IsOneFile(a, b) || IsOneFile(old(a), b) || IsOneFile(a, old(b));
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

// The runtime asks the first component first: in front the metrics component counts all calls, at
// the end those of the service, which asks for that component itself.
std::vector<std::string> Components(const Options& options) {
  std::vector<std::string> components = options.components;
  if (options.metrics) {
    components.insert(components.begin(), options.metrics_component);
  } else if (!options.bus_address.empty() && BusService::IsBuilt()) {
    components.push_back(options.metrics_component);
  }
  return components;
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
        printer_(std::cout, std::cerr, MakeStyle(options.json, options.show_secrets)),
        audit_(options.log_limit),
        log_limit_(options.log_limit),
        signals_([this] { SayStopping(); }, [this] { OpenFiles(); }),
        log_view_(&printer_, OnTerminal(options) && options.log_file.empty(),
                  !options.log_file.empty(),
                  [this](const std::string& line) { NoteLogLine(line); }) {}

  int Run();

 private:
  void SayStopping();
  // Opens log and audit, or opens them anew. False after a line that says what cannot be opened.
  bool OpenFiles();
  bool OpenLog();
  void NoteLogLine(const std::string& line);
  // False when the program is told to stop meanwhile.
  bool WaitForStart(std::chrono::seconds delay) const;
  // Does nothing without an address. False after a line that says what is wrong.
  bool StartService(const Host& host);
  // Does nothing without hours. Its first refresh waits for the keeper's Start.
  void MakeTokenKeeper(const Host& host);
  void NoteSignInNeeded(const keeper::User& user, bool needed);
  void NoteFreeSpace(const std::string& folder, uint64_t bytes, bool low);
  // Tells the service manager what somebody should look at.
  void NotifyStatus();
  std::vector<std::string> SignInNeeded() const;
  bool RunConsole(const Host& host, base::ScopedFd input);
  void Watch(std::optional<std::chrono::seconds> time);
  ConsoleServices MakeServices(const Host& host);
  std::string MetricsText(const Host& host) const;

  const Options& options_;
  Printer printer_;
  Activity activity_;
  SeenIds seen_ids_;
  Audit audit_;
  base::Lock log_file_lock_;  // opens the log's file
  FileLimit log_limit_;
  base::Lock status_lock_;
  StopSignals signals_;
  LogView log_view_;
  Metrics* metrics_ = nullptr;  // while the host lives; null when nothing is counted
  std::atomic<bool> low_space_{false};
  std::unique_ptr<Keeper> keeper_;  // null when no tokens are kept fresh
  std::unique_ptr<BusService> service_;
  // For the platform's bus, which may deliver events while these are being made.
  std::atomic<Keeper*> listening_keeper_{nullptr};
  std::atomic<BusService*> listening_service_{nullptr};
};

void Program::SayStopping() {
  const std::string busy = activity_.Get();
  Notify("STOPPING=1");
  printer_.Error(busy.empty() ? "stopping" : "stopping: waiting for " + busy);
}

bool Program::OpenFiles() {
  bool good = OpenLog();
  if (!options_.audit_file.empty() && !audit_.Open(options_.audit_file)) {
    printer_.Error(options_.audit_file +
                   ": cannot be opened for the audit: " + std::strerror(errno));
    good = false;
  }
  // Two writers in one file would cut each other's lines, and no reader could tell them apart.
  if (good && !options_.log_file.empty() && ShareFiles(options_.log_file, options_.audit_file)) {
    printer_.Error(options_.audit_file + ": is the log file; the audit needs one of its own");
    good = false;
  }
  return good;
}

bool Program::OpenLog() {
  if (options_.log_file.empty()) return true;
  {
    base::AutoLock hold(log_file_lock_);
    if (logging::SetLogFile(options_.log_file)) {
      log_limit_.NoteOpened(options_.log_file);
      return true;
    }
  }
  printer_.Error(options_.log_file + ": cannot be opened for the log");
  return false;
}

void Program::NoteLogLine(const std::string& line) {
  NoteTransferError(line);
  base::AutoLock hold(log_file_lock_);
  if (log_limit_.MakeRoom(line.size())) logging::SetLogFile(options_.log_file);
}

int Program::Run() {
  base::ScopedFd input = OpenInput(options_.script_file);
  if (input.get() < 0) {
    printer_.Error(MakeRunOptions(options_.script_file, options_.keep_going).source_name +
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
    if (Keeper* const keeper = listening_keeper_) keeper->NoteEvent(event);
    if (BusService* const service = listening_service_) service->NoteEvent(event);
    if (audit_.TakeFailure()) printer_.Error(kAuditFailure);
  });
  std::string error;
  std::unique_ptr<Host> host =
      Host::Start(options_.config_file, Components(options_), &error,
                  [this](std::chrono::seconds delay) { return WaitForStart(delay); });
  if (host == nullptr && error.empty()) return kExitGood;
  if (host == nullptr) {
    printer_.Error(error);
    return kExitCannotStart;
  }
  metrics_ = static_cast<Metrics*>(host->FindInterface(kMetricsInterface));
  for (const std::string& fault : host->storage_faults()) printer_.Error(fault);
  const std::string folder = FolderOf(host->DatabasePath());
  const FreeSpaceWatch space_watch(
      folder, [this, folder](uint64_t bytes, bool low) { NoteFreeSpace(folder, bytes, low); });
  MakeTokenKeeper(*host);
  if (!StartService(*host)) return kExitCannotStart;
  Notify("READY=1");
  if (keeper_ != nullptr) keeper_->Start();
  const bool good = RunConsole(*host, std::move(input));
  Activity::Scope scope(activity_, "the components to finish");
  if (signals_.WaitForStop(kNow)) SayStopping();
  if (keeper_ != nullptr) keeper_->Stop();
  if (service_ != nullptr) service_->Stop();
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

bool Program::WaitForStart(std::chrono::seconds delay) const {
  const std::string waits = "waiting " + std::to_string(delay.count()) + " s before the start";
  logging::LogMessage(__FILE__, __LINE__, logging::LOG_INFO).stream() << waits;
  // The manager's usual limit for a start counts from the end of the wait.
  const std::chrono::microseconds limit = delay + std::chrono::seconds(90);
  Notify("STATUS=" + waits + "\nEXTEND_TIMEOUT_USEC=" + std::to_string(limit.count()));
  if (signals_.WaitForStop(delay)) return false;
  Notify("STATUS=");
  return true;
}

bool Program::StartService(const Host& host) {
  if (options_.bus_address.empty()) return true;
  BusService::Options options{.address = options_.bus_address};
  std::string error;
  if (ReadBusKeys([&](const std::string& key) { return host.ConfigOption(key); }, &options,
                  &error)) {
    service_ = BusService::Start(
        options,
        {.accounts = metrics_ == nullptr ? host.accounts() : metrics_->counted_accounts(),
         .audit = &audit_,
         .seen_ids = &seen_ids_,
         .flush_events = [] { evt::EventManager::GetInstance()->Flush(); },
         .report = [this](const std::string& line) { printer_.Error(line); },
         .metrics = [this, &host] { return MetricsText(host); },
         .sign_in_needed = [this] { return SignInNeeded(); },
         .on_refusal = [this](Refusal why) { metrics_->CountRefusal(why); }},
        &error);
  }
  if (service_ == nullptr) printer_.Error(error);
  listening_service_ = service_.get();
  return service_ != nullptr;
}

void Program::MakeTokenKeeper(const Host& host) {
  if (options_.keep_tokens_hours == 0) return;
  keeper_ = MakeKeeper(
      host, options_.keep_tokens_hours,
      {.on_refresh =
           [this](const keeper::User& user, int result, const char* what) {
             audit_.NoteKeeper(
                 {.user_uuid = user.uuid, .user_id = user.id, .result = result, .message = what});
           },
       .on_sign_in_needed = [this](const keeper::User& user,
                                   bool needed) { NoteSignInNeeded(user, needed); },
       .report = [this](const std::string& line) { printer_.Error(line); }});
  listening_keeper_ = keeper_.get();
}

void Program::NoteSignInNeeded(const keeper::User& user, bool needed) {
  audit_.NoteKeeper({.user_uuid = user.uuid,
                     .user_id = user.id,
                     .message = needed ? "must sign in" : "need not sign in any more"});
  if (BusService* const service = listening_service_) {
    service->NoteSignInNeeded(user.uuid, user.id, needed);
  }
  NotifyStatus();
}

void Program::NoteFreeSpace(const std::string& folder, uint64_t bytes, bool low) {
  low_space_ = low;
  const std::string left = folder + " has " + InMebibytes(bytes) + " left";
  logging::LogMessage(__FILE__, __LINE__, low ? logging::LOG_ERROR : logging::LOG_INFO).stream()
      << left << (low ? ": make room, or changes will be lost" : "");
  NotifyStatus();
}

void Program::NotifyStatus() {
  // Until it is sent, so that the latest status is the one that the manager hears last.
  base::AutoLock hold(status_lock_);
  std::string status;
  if (const Keeper* const keeper = listening_keeper_) {
    status = "Users that must sign in: " + std::to_string(keeper->SignInNeeded().size());
  }
  if (low_space_) status += std::string(status.empty() ? "" : "; ") + "little free space";
  Notify("STATUS=" + status);
}

std::vector<std::string> Program::SignInNeeded() const {
  std::vector<std::string> uuids;
  if (keeper_ == nullptr) return uuids;
  for (const keeper::User& user : keeper_->SignInNeeded()) uuids.push_back(user.uuid);
  return uuids;
}

bool Program::RunConsole(const Host& host, base::ScopedFd input) {
  if (options_.daemon) {
    while (!signals_.WaitForStop(std::chrono::hours(1))) continue;
    return true;
  }
  const ConsoleServices services = MakeServices(host);
  if (OnTerminal(options_)) NoteStoredIds(services, &seen_ids_);
  Console console(services, {&printer_, &activity_, &seen_ids_, &audit_});
  return RunInput(MakeRunOptions(options_.script_file, options_.keep_going), std::move(input),
                  signals_, &console, &printer_);
}

void Program::Watch(std::optional<std::chrono::seconds> time) {
  const bool by_key = OnTerminal(options_);
  if (by_key && !time) printer_.Say("Watching events and log lines; press Enter to end.");
  log_view_.Follow(true);
  WaitForEnter(signals_, by_key, time);
  log_view_.Follow(false);
}

ConsoleServices Program::MakeServices(const Host& host) {
  ConsoleServices services;
  UseAccounts(host.accounts(), &services);
  services.facts = MakeFacts(options_, host);
  services.sign_in_needed = [this] { return SignInNeeded(); };
  services.free_space = [folder = FolderOf(host.DatabasePath())]() {
    const std::optional<uint64_t> bytes = FreeBytes(folder);
    return bytes ? std::optional(ConsoleServices::FreeSpace{*bytes, *bytes < kLowSpace})
                 : std::nullopt;
  };
  services.flush_events = [] { evt::EventManager::GetInstance()->Flush(); };
  services.pause = [this](std::chrono::milliseconds time) { return signals_.WaitForStop(time); };
  services.request_code = [this, &host](const std::string& user, std::string* code,
                                        std::string* error) {
    return RequestCode(
        host.ConfigOption("account_zep_auth_url"), user,
        [this] { return signals_.WaitForStop(kNow); }, code, error);
  };
  services.watch = [this](std::optional<std::chrono::seconds> time) { Watch(time); };
  services.read_metrics = [this, &host](std::string* text, std::string* error) {
    if (metrics_ == nullptr) {
      *error = "nothing is counted; start the gateway with --metrics";
      return false;
    }
    *text = MetricsText(host);
    return true;
  };
  return services;
}

std::string Program::MetricsText(const Host& host) const {
  Metrics::HostState state{.open_sessions = CountOpenSessions(*metrics_->accounts(), seen_ids_),
                           .free_bytes = FreeBytes(FolderOf(host.DatabasePath()))};
  if (keeper_ != nullptr) state.sign_in_needed = SignInNeeded().size();
  struct stat database {};
  if (stat(host.DatabasePath().c_str(), &database) == 0) {
    state.database_bytes = static_cast<uint64_t>(database.st_size);
  }
  return metrics_->Text(state);
}

}  // namespace

int RunGateway(const Options& options) {
  PrepareProcess();
  if (options.doctor.wanted) {
    DoctorOptions doctor = options.doctor;
    doctor.color = MakeStyle(options.json, false).color_out;
    // Before ForgetProxies: the doctor reports proxy variables.
    const std::optional<Severity> worst = RunDoctor(doctor, std::cout);
    if (!worst) std::cerr << "qorn-gateway: not all of the output could be written\n";
    return ExitStatusOf(worst);
  }
  if (options.maintain != nullptr) {
    return options.maintain(options.maintenance, std::cout, std::cerr);
  }
  ForgetProxies();
  return Program(options).Run();
}

}  // namespace gateway
