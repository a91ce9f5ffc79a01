// qornctl's command line.
#ifndef QORN_CTL_OPTIONS_H_
#define QORN_CTL_OPTIONS_H_

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace ctl {

struct Options {
  std::string address = "system";
  int timeout_seconds = 120;
  bool json = false;
  bool keep_going = false;
  bool show_secrets = false;
  std::vector<std::string> command;  // empty: commands are read
};

struct KnownOption {
  std::string name;  // "--bus"
  bool takes_value;
  std::string help;  // one line
};
std::vector<KnownOption> KnownOptions();

// Fills `options`. An exit status when the program has nothing more to do: after --help and
// --version, which write to `out`, or after a wrong option, which gets one line on `err`.
std::optional<int> ParseOptions(int argc, const char* const* argv, std::ostream& out,
                                std::ostream& err, Options* options);

}  // namespace ctl

#endif  // QORN_CTL_OPTIONS_H_
