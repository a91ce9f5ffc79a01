#include "ctl/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "gateway/process/exit_status.h"

namespace ctl {
namespace {

constexpr int kMostSeconds = 24 * 60 * 60;

void Declare(CLI::App* app, Options* options) {
  app->add_option("--bus", options->address,
                  "The bus that the gateway is on: system, session or an address")
      ->type_name("ADDRESS")
      ->capture_default_str();
  app->add_option("--timeout", options->timeout_seconds, "How long a call may take")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, kMostSeconds))
      ->capture_default_str();
  app->add_flag("--json", options->json, "Write one JSON object a line");
  app->add_flag("--keep-going", options->keep_going, "Go on after a command of a pipe failed");
  app->add_flag("--show-secrets", options->show_secrets,
                "Show tokens and authorisation codes in full");
  app->set_version_flag("--version", "qornctl " QORN_VERSION);
  app->footer(
      "A command and its words may stand behind the options: qornctl users. Without one, commands\n"
      "are read one a line.\n"
      "\"qornctl help\" lists the commands: those of the gateway's own console.\n"
      "\"qornctl completion bash\", or zsh, prints a script by which the shell completes them.\n"
      "Exit status: 0 good; 1 a command failed, or the output could not be written; 2 wrong "
      "option,\n"
      "or no gateway answers.");
}

// From the first word on that is no option nor an option's value, all belongs to the command, empty
// words too, which the parser would drop.
int CommandStart(int argc, const char* const* argv) {
  int at = 1;
  while (at < argc && argv[at][0] == '-') {
    const std::string option = argv[at];
    at += option == "--bus" || option == "--timeout" ? 2 : 1;
  }
  return std::min(at, argc);
}

}  // namespace

std::vector<KnownOption> KnownOptions() {
  CLI::App app;
  Options ignored;
  Declare(&app, &ignored);
  std::vector<KnownOption> known;
  for (const CLI::Option* option : app.get_options()) {
    known.push_back({.name = "--" + option->get_lnames().at(0),
                     .takes_value = option->get_expected_max() > 0,
                     .help = option->get_description()});
  }
  return known;
}

std::optional<int> ParseOptions(int argc, const char* const* argv, std::ostream& out,
                                std::ostream& err, Options* options) {
  CLI::App app("Uses the accounts of a running gateway.", "qornctl");
  Declare(&app, options);
  try {
    const int start = CommandStart(argc, argv);
    app.parse(start, argv);
    options->command.assign(argv + start, argv + argc);
  } catch (const CLI::Success& wanted) {  // --help or --version
    app.exit(wanted, out, err);
    return gateway::kExitGood;
  } catch (const CLI::ParseError& wrong) {
    err << "qornctl: " << wrong.what() << "; --help lists the options\n";
    return gateway::kExitCannotStart;
  }
  return std::nullopt;
}

}  // namespace ctl
