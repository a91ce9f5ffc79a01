#ifndef QORN_PLATFORM_RUNTIME_CONFIG_FILE_H_
#define QORN_PLATFORM_RUNTIME_CONFIG_FILE_H_

#include <map>
#include <string>
#include <vector>

namespace runtime {

// One element of the configuration file.
struct ConfigEntry {
  std::string key;
  std::string value;
  int line = 0;       // from 1
  bool plain = true;  // false if it also contains elements or attributes, which nothing reads
};

// Reads all elements in order, including several with the same key. Fails like ReadConfigFile.
bool ReadConfigEntries(const std::string& file, std::vector<ConfigEntry>* entries,
                       std::string* error);

// Reads the configuration file into `*config`; of several elements with the same key the first
// counts. False, with `*config` untouched and one line in `*error`, "FILE: reason" or
// "FILE:LINE:COLUMN: reason", if the file cannot be read, is not well-formed, has more than 1,000
// elements or another root than "config". Any thread.
bool ReadConfigFile(const std::string& file, std::map<std::string, std::string>* config,
                    std::string* error);

}  // namespace runtime

#endif  // QORN_PLATFORM_RUNTIME_CONFIG_FILE_H_
