#include "gateway/gateway.h"

#include <curl/curl.h>
#include <fcntl.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>

#include "base/logging.h"
#include "evt/event_manager.h"
#include "gateway/activity.h"
#include "gateway/console.h"
#include "gateway/events.h"
#include "gateway/host.h"
#include "gateway/line_source.h"
#include "gateway/printer.h"
#include "gateway/request_code.h"
#include "gateway/runner.h"
#include "gateway/signals.h"
#include "gateway/terminal.h"

namespace gateway {
namespace {

// libcurl obeys these; the cloud is talked to directly.
void ForgetProxies() {
  for (const char* name : {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY",
                           "HTTP_PROXY", "no_proxy", "NO_PROXY"}) {
    unsetenv(name);
  }
}

// A closed standard stream would give its number to the next file that is opened.
void OpenStandardStreams() {
  int fd = open("/dev/null", O_RDWR);
  while (fd >= 0 && fd <= STDERR_FILENO) fd = open("/dev/null", O_RDWR);
  if (fd > STDERR_FILENO) close(fd);
}

bool OnTerminal(const Options& options) {
  return options.script_file.empty() && isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
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

Descriptor OpenInput(const Options& options) {
  if (options.script_file.empty()) return Descriptor(dup(STDIN_FILENO));
  return Descriptor(open(options.script_file.c_str(), O_RDONLY | O_CLOEXEC));
}

void SayStopping(Printer* printer, Activity* activity) {
  const std::string busy = activity->Get();
  printer->Error(busy.empty() ? "stopping" : "stopping: waiting for " + busy);
}

ConsoleServices MakeServices(const Host& host, const StopSignals& signals) {
  ConsoleServices services;
  services.accounts = host.accounts();
  services.flush_events = [] { evt::EventManager::GetInstance()->Flush(); };
  services.pause = [&signals](std::chrono::milliseconds time) { return signals.WaitForStop(time); };
  services.request_code = [&host, &signals](const std::string& user, std::string* code,
                                            std::string* error) {
    return RequestCode(
        host.ConfigOption("account_zep_auth_url"), user,
        [&signals] { return signals.WaitForStop(std::chrono::milliseconds(0)); }, code, error);
  };
  return services;
}

std::unique_ptr<LineSource> MakeSource(const Options& options, Descriptor input,
                                       const StopSignals& signals, Printer* printer) {
  if (OnTerminal(options)) return std::make_unique<TerminalLineSource>(signals, printer);
  return std::make_unique<DescriptorLineSource>(std::move(input), signals);
}

}  // namespace

int RunGateway(const Options& options) {
  OpenStandardStreams();
  ForgetProxies();
  std::signal(SIGPIPE, SIG_IGN);
  Printer printer(std::cout, std::cerr, options.show_secrets);
  Activity activity;
  StopSignals signals([&printer, &activity] { SayStopping(&printer, &activity); });
  const RunOptions run_options = MakeRunOptions(options);
  Descriptor input = OpenInput(options);
  if (input.get() < 0) {
    printer.Error(run_options.source_name + ": cannot be opened: " + std::strerror(errno));
    return kExitCannotStart;
  }
  if (!options.log_file.empty() && !logging::SetLogFile(options.log_file)) {
    printer.Error(options.log_file + ": cannot be opened for the log");
    return kExitCannotStart;
  }
  curl_global_init(CURL_GLOBAL_DEFAULT);
  EventPrinter events(&printer);
  std::string error;
  std::unique_ptr<Host> host = Host::Start(options.config_file, options.components, &error);
  if (host == nullptr) {
    printer.Error(error);
    return kExitCannotStart;
  }
  int status = kExitGood;
  {
    Console console(MakeServices(*host, signals), &printer, &activity);
    const std::unique_ptr<LineSource> source =
        MakeSource(options, std::move(input), signals, &printer);
    status = RunLines(run_options, source.get(), &console, &printer);
  }
  Activity::Scope scope(activity, "the components to finish");
  if (signals.WaitForStop(std::chrono::milliseconds(0))) SayStopping(&printer, &activity);
  host.reset();
  return status;
}

}  // namespace gateway
