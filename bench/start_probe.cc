// Loads a library once, in a process of its own: start_probe component LIBRARY loads the component
// until its interface is there, start_probe floor LIBRARY the library that only does what is under
// it. Prints the nanoseconds that took and the bytes of resident memory that came with it.
#include <dlfcn.h>

#include <chrono>
#include <cstdio>
#include <cstring>

#include "base/logging.h"
#include "bench/home.h"
#include "runtime/runtime.h"

namespace bench {
namespace {

void LoadComponent(const char* library) {
  std::string error;
  if (!runtime::Runtime::GetInstance()->LoadComponent(library, &error)) Die(error);
  void* service = nullptr;
  Require(runtime::Runtime::GetInstance()->QueryInterface("account_interface", &service),
          "no account_interface");
}

void LoadFloor(const char* library, const std::string& database) {
  void* loaded = dlopen(library, RTLD_NOW | RTLD_LOCAL);
  if (loaded == nullptr) Die(dlerror());
  auto* const prepare = reinterpret_cast<int (*)(const char*)>(dlsym(loaded, "PrepareFloor"));
  Require(prepare != nullptr && prepare(database.c_str()) == 1, "the floor library fails");
}

void Load(bool component, const char* library) {
  Home home;
  logging::SetMinLogLevel(logging::LOG_ERROR);
  ResidentBytes();  // What reading it takes is there already.
  const long before = ResidentBytes();
  const auto begin = std::chrono::steady_clock::now();
  component ? LoadComponent(library) : LoadFloor(library, home.database_path());
  const auto time = std::chrono::steady_clock::now() - begin;
  std::printf(
      "%lld %ld\n",
      static_cast<long long>(std::chrono::duration_cast<std::chrono::nanoseconds>(time).count()),
      ResidentBytes() - before);
  logging::SetMinLogLevel(logging::LOG_FATAL + 1);  // The component's end is of no interest.
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  if (argc != 3) bench::Die("start_probe component|floor LIBRARY");
  bench::Load(std::strcmp(argv[1], "component") == 0, argv[2]);
  return 0;
}
