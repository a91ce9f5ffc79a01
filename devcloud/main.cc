#include <pthread.h>
#include <signal.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>

#include "devcloud/cloud.h"

namespace {

// Blocks SIGINT and SIGTERM in this thread and in every thread started later, so that only sigwait
// receives them. Call before the cloud starts its thread.
sigset_t BlockStopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return signals;
}

void AddSettings(CLI::App* app, devcloud::Settings* settings) {
  for (const devcloud::Setting& setting : devcloud::AllSettings()) {
    const auto write = [&setting, settings](const std::string& value) {
      if (!setting.write(value, settings)) {
        throw CLI::ValidationError(devcloud::OptionOf(setting), "not a value of it: " + value);
      }
    };
    app->add_option_function<std::string>(devcloud::OptionOf(setting), write, setting.help)
        ->option_text(setting.option_text);
  }
}

void AddOptions(CLI::App* app, devcloud::Options* options, bool* urls_only) {
  app->add_option("--port", options->http_port, "HTTP port; 0: a free one")
      ->option_text("PORT [0]");
  app->add_option("--https-port", options->https_port, "HTTPS port; 0: a free one")
      ->option_text("PORT [0]");
  app->add_option("--api-port", options->api_port,
                  "port of the page and the API only, open even while the cloud refuses "
                  "connections; 0: a free one")
      ->option_text("PORT [0]");
  app->add_option("--address", options->address, "IP address to listen on")
      ->option_text("IP [127.0.0.1]");
  app->add_option("--gateway", options->gateways,
                  "physical address of a gateway known from the start (repeatable)")
      ->option_text("ADDRESS")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  app->add_option("--state", options->state_file,
                  "file for accounts, tokens and registrations; created if it is missing")
      ->option_text("FILE");
  app->add_option("--scenario", options->scenario_file,
                  "faults that hold from the start: a JSON array of what POST /api/faults takes")
      ->option_text("FILE");
  AddSettings(app, &options->settings);
  app->add_flag("--print-urls", *urls_only,
                "print three lines and nothing else: \"http URL\", \"https URL\", \"api URL\"");
  app->set_version_flag("--version", "qorn-devcloud " QORN_VERSION);
  app->footer(
      "The web page is at / of each URL. Runs until SIGINT or SIGTERM.\n"
      "Exit status: 0 after a signal, 1 if it cannot start, 2 for bad options.\n\n"
      "Example, for use in tests: qorn-devcloud --port 0 --print-urls");
}

int Run(const devcloud::Options& options, bool urls_only) {
  const sigset_t signals = BlockStopSignals();
  std::string error;
  const std::unique_ptr<devcloud::Cloud> cloud = devcloud::Cloud::Start(options, &error);
  if (cloud == nullptr) {
    std::cerr << "qorn-devcloud: " << error << "\n";
    return 1;
  }
  std::cout << "http " << cloud->http_url() << "\nhttps " << cloud->https_url() << "\napi "
            << cloud->api_url() << "\n";
  if (!urls_only) std::cout << "Page: " << cloud->api_url() << "/  Ctrl-C ends it.\n";
  std::cout.flush();
  int signal_number = 0;
  sigwait(&signals, &signal_number);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Account server and user portal for development", "qorn-devcloud");
  devcloud::Options options;
  bool urls_only = false;
  AddOptions(&app, &options, &urls_only);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& asked) {
    return app.exit(asked);  // --help and --version
  } catch (const CLI::ParseError& failure) {
    std::cerr << "qorn-devcloud: " << failure.what() << "\n";
    return 2;
  }
  return Run(options, urls_only);
}
