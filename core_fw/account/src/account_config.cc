#include "core_fw/account/src/account_config.h"

#include "runtime/runtime.h"

namespace account {

bool ReadConfigOption(const char* key, std::string* value) {
  // Null in a host that uses the component without a runtime; then every key is absent.
  const runtime::Runtime* runtime = runtime::Runtime::GetInstance();
  return runtime != nullptr && runtime->GetConfigOption(key, value);
}

}  // namespace account
