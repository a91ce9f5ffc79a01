#ifndef QORN_PLATFORM_RUNTIME_CONFIG_FILE_H_
#define QORN_PLATFORM_RUNTIME_CONFIG_FILE_H_

#include <map>
#include <string>

namespace runtime {

// Reads the configuration file into `*config`, key by value. False, `*config` untouched and one
// line in `*error`, "FILE: reason" or "FILE:LINE:COLUMN: reason", when it cannot be read, is not
// well-formed or has another root than "config". Any thread.
bool ReadConfigFile(const std::string& file, std::map<std::string, std::string>* config,
                    std::string* error);

}  // namespace runtime

#endif  // QORN_PLATFORM_RUNTIME_CONFIG_FILE_H_
