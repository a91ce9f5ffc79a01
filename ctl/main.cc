#include <iostream>
#include <optional>

#include "ctl/completion.h"
#include "ctl/options.h"
#include "ctl/program.h"

int main(int argc, char** argv) {
  ctl::Options options;
  if (const std::optional<int> status =
          ctl::ParseOptions(argc, argv, std::cout, std::cerr, &options)) {
    return *status;
  }
  if (!options.command.empty() && options.command[0] == "completion") {
    return ctl::PrintCompletion(options.command);
  }
  return ctl::RunCtl(options);
}
