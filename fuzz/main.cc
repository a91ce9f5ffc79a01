// The entry point that libFuzzer calls for each input and, in a build without libFuzzer, a program
// that runs the target once over each file of the folders named on the command line.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "base/logging.h"
#include "fuzz/fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Log lines are still built.
  logging::SetLogMessageHandler(
      [](int, const char*, int, std::size_t, const std::string&) { return true; });
  fuzz::Run(std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}

#ifndef QORN_FUZZ
int main(int argc, char** argv) {
  int inputs = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      std::ifstream file(entry.path(), std::ios::binary);
      const std::string text{std::istreambuf_iterator<char>(file), {}};
      std::fprintf(stderr, "%s\n", entry.path().c_str());
      LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
      ++inputs;
    }
  }
  return inputs > 0 ? 0 : 1;
}
#endif
