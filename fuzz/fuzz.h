// What the fuzz targets share. Each target is one file with LLVMFuzzerTestOneInput in it.
#ifndef QORN_FUZZ_FUZZ_H_
#define QORN_FUZZ_FUZZ_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "base/logging.h"

// The entry point that libFuzzer and corpus_main.cc call for each input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

// Ends the process, which counts as a finding, unless `holds`.
inline void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "this does not hold: %s\n", what);
  std::abort();
}

inline std::string Text(const std::uint8_t* data, std::size_t size) {
  return std::string(reinterpret_cast<const char*>(data), size);
}

// Builds the log lines as ever, but writes none.
inline void QuietLog() {
  logging::SetLogMessageHandler(
      [](int, const char*, int, std::size_t, const std::string&) { return true; });
}

}  // namespace fuzz

#endif  // QORN_FUZZ_FUZZ_H_
