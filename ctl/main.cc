#include <iostream>
#include <optional>

#include "ctl/options.h"
#include "ctl/program.h"

int main(int argc, char** argv) {
  ctl::Options options;
  if (const std::optional<int> status =
          ctl::ParseOptions(argc, argv, std::cout, std::cerr, &options)) {
    return *status;
  }
  return ctl::RunCtl(options);
}
