// What the fuzz targets share. Each target is one file that defines fuzz::Run.
#ifndef QORN_FUZZ_FUZZ_H_
#define QORN_FUZZ_FUZZ_H_

#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz {

// Runs the target on one input; its log lines are discarded.
void Run(const std::string& input);

// Ends the process, which counts as a finding, unless `holds`.
inline void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "this does not hold: %s\n", what);
  std::abort();
}

}  // namespace fuzz

#endif  // QORN_FUZZ_FUZZ_H_
