#include <pthread.h>
#include <signal.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>

#include "devcloud/cloud.h"

namespace {

// Blocks the signals that end the program, in this thread and those that it starts.
sigset_t HoldEndSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return signals;
}

void AddOptions(CLI::App* app, devcloud::Options* options, bool* urls_only) {
  app->add_option("--port", options->http_port, "HTTP port (0: a free one)")->capture_default_str();
  app->add_option("--https-port", options->https_port, "HTTPS port (0: a free one)")
      ->capture_default_str();
  app->add_option("--api-port", options->api_port,
                  "port of the page and the API alone, open also while the cloud refuses "
                  "connections (0: a free one)")
      ->capture_default_str();
  app->add_option("--address", options->address, "IP address to listen on")->capture_default_str();
  app->add_option("--gateway", options->gateways,
                  "physical address of a gateway that the cloud knows (repeatable)")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  app->add_option("--state", options->state_file,
                  "file that keeps accounts, tokens and registrations");
  app->add_flag("--print-urls", *urls_only, "print the URLs and nothing else");
  app->set_version_flag("--version", "qorn-devcloud " QORN_VERSION);
}

int Run(const devcloud::Options& options, bool urls_only) {
  const sigset_t signals = HoldEndSignals();
  std::string error;
  const std::unique_ptr<devcloud::Cloud> cloud = devcloud::Cloud::Start(options, &error);
  if (cloud == nullptr) {
    std::cerr << "qorn-devcloud: " << error << "\n";
    return 1;
  }
  std::cout << "http " << cloud->http_url() << "\nhttps " << cloud->https_url() << "\napi "
            << cloud->api_url() << "\n";
  if (!urls_only) std::cout << "Ctrl-C ends it.\n";
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
