#include <sys/stat.h>

#include <iostream>
#include <optional>

#include "gateway/options.h"
#include "gateway/program.h"

int main(int argc, char** argv) {
  // The database and the log hold secrets: nobody else reads what this process creates.
  umask(077);
  gateway::Options options;
  if (const std::optional<int> status =
          gateway::ParseOptions(argc, argv, std::cout, std::cerr, &options)) {
    return *status;
  }
  return gateway::RunGateway(options);
}
