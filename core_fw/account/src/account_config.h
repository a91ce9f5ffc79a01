#ifndef QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_CONFIG_H_
#define QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_CONFIG_H_

#include <string>

namespace account {

// Reads a key of config.xml from the runtime. False, with `value` untouched, if the key is absent
// or there is no runtime. Any thread.
bool ReadConfigOption(const char* key, std::string* value);

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_CONFIG_H_
