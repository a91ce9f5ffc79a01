#include "gateway/host/host.h"

#include "gateway/host/database_path.h"
#include "gateway/host/durable_storage.h"
#include "gateway/host/start_spread.h"
#include "gateway/host/storage_check.h"
#include "runtime/runtime.h"

namespace gateway {

std::unique_ptr<Host> Host::Start(const std::string& config_file,
                                  const std::vector<std::string>& components, std::string* error,
                                  const StartWait& wait) {
  runtime::Runtime* runtime = runtime::Runtime::Create(config_file, error);
  if (runtime == nullptr) return nullptr;
  std::unique_ptr<Host> host(new Host());
  if (!host->lock_.Take(host->DatabasePath(), error)) return nullptr;
  std::chrono::seconds delay{0};
  if (!host->ReadStartDelay(&delay, error)) return nullptr;
  if (wait && delay.count() > 0 && !wait(delay)) return nullptr;
  // After the lock, so that no other gateway writes; before the component opens the database, since
  // closing this examination's descriptor would drop the locks that SQLite holds by then.
  host->storage_faults_ = FindStorageFaults(host->DatabasePath());
  if (host->ConfigOption(kDurableStorageKey) == "on" && !UseDurableStorage()) {
    *error = std::string(kDurableStorageKey) + ": SQLite cannot be initialised";
    return nullptr;
  }
  for (const std::string& component : components) {
    if (!runtime->LoadComponent(component, error)) return nullptr;
  }
  host->accounts_ = static_cast<AccountManager*>(host->FindInterface("account_interface"));
  if (host->accounts_ == nullptr) {
    *error = "none of the loaded components has the account interface";
    return nullptr;
  }
  return host;
}

Host::~Host() { runtime::Runtime::Destroy(); }

bool Host::ReadStartDelay(std::chrono::seconds* delay, std::string* error) const {
  const std::string value = ConfigOption(kStartSpreadKey);
  std::chrono::seconds spread{0};
  if (!value.empty() && !ParseStartSpread(value, &spread)) {
    *error =
        std::string(kStartSpreadKey) + ": \"" + value + "\" is no number of seconds up to 86400";
    return false;
  }
  *delay = StartDelay(spread, ConfigOption("account_device_physical_address_text"));
  return true;
}

void* Host::FindInterface(const std::string& name) const {
  void* found = nullptr;
  runtime::Runtime::GetInstance()->QueryInterface(name, &found);
  return found;
}

std::string Host::ConfigOption(const std::string& key) const {
  std::string value;
  runtime::Runtime::GetInstance()->GetConfigOption(key, &value);
  return value;
}

std::string Host::DatabasePath() const {
  return JoinDatabasePath(ConfigOption("qorn_storage_path"), ConfigOption("account_db_path"));
}

}  // namespace gateway
