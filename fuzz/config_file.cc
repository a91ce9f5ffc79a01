// The configuration file.
#include "runtime/config_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/fuzz.h"

namespace runtime {
namespace {

void Run(const std::string& text) {
  static const int file = memfd_create("config.xml", 0);
  static const std::string path = "/proc/self/fd/" + std::to_string(file);
  const bool written = ftruncate(file, 0) == 0 && pwrite(file, text.data(), text.size(), 0) ==
                                                      static_cast<ssize_t>(text.size());
  fuzz::Require(written, "the file can be written");
  std::vector<ConfigEntry> entries = {{"held", "", 0, true}};
  std::map<std::string, std::string> config = {{"held", ""}};
  std::string error;
  const bool good = ReadConfigEntries(path, &entries, &error);
  std::string same_error;
  fuzz::Require(ReadConfigFile(path, &config, &same_error) == good && same_error == error,
                "both ways to read agree");
  if (!good) {
    fuzz::Require(entries.size() == 1 && config.count("held") == 1, "a bad file changes nothing");
    fuzz::Require(error.rfind(path + ":", 0) == 0 && error.find('\n') == std::string::npos,
                  "an error is one line");
    return;
  }
  int line = 0;
  for (const ConfigEntry& entry : entries) {
    fuzz::Require(!entry.key.empty() && config.count(entry.key) == 1, "each key has a value");
    fuzz::Require(entry.line >= line, "lines go up");
    line = entry.line;
  }
}

}  // namespace
}  // namespace runtime

void fuzz::Run(const std::string& input) { runtime::Run(input); }
