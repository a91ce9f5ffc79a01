#include "core_fw/account/src/account_component.h"

#include <atomic>
#include <new>
#include <utility>

#include "base/location.h"
#include "core_fw/account/src/account_config.h"
#include "core_fw/account/src/account_log.h"
#include "core_fw/account/src/account_manager_impl.h"
#include "core_fw/account/src/account_result.h"

namespace account {
namespace {

// Plain pointers without locks: the runtime makes the lifecycle calls from one thread.
Component* g_component = nullptr;
AccountManagerImpl* g_service = nullptr;
std::atomic<bool> g_interface_handed_out{false};

// The service lives here and is never destroyed, because others may hold a pointer to it until the
// library is unmapped. Static storage also means that nothing leaks then.
alignas(AccountManagerImpl) unsigned char g_service_storage[sizeof(AccountManagerImpl)];

// The one service, made by the first call. Null, logged, if that call ran out of memory or threads;
// the next one retries.
AccountManagerImpl* GetService() noexcept {
  if (g_service != nullptr) return g_service;
  // Stored before Init runs: Init logs, and a log handler may ask for the interface. It must find
  // this object and not make a second one in the same storage.
  g_service = new (g_service_storage) AccountManagerImpl;
  try {
    g_service->Init();
  } catch (...) {
    AccountManagerImpl* failed = std::exchange(g_service, nullptr);
    failed->Shutdown();
    failed->~AccountManagerImpl();
    try {
      LogFailure(FROM_HERE, "Init", AccountResultMessage(kAccountFailure));
    } catch (...) {  // The line is lost, too.
    }
  }
  return g_service;
}

void ReadLogLevel() {
  static constexpr std::pair<const char*, int> kLevels[] = {
      {"LOG_VERBOSE", -1},      {"LOG_INTERNAL_DETAILED_INFO", 0},
      {"LOG_INTERNAL_INFO", 1}, {"LOG_INFO", 2},
      {"LOG_WARNING", 3},       {"LOG_ERROR", 4},
      {"LOG_ERROR_REPORT", 5},  {"LOG_FATAL", 6},
  };
  std::string name;
  ReadConfigOption("account_log_level", &name);
  for (const auto& [known, level] : kLevels) {
    if (name == known) SetComponentLogLevel(level);
  }
}

Component* GetOrMakeComponent() {
  if (g_component == nullptr) g_component = new AccountComponent;
  return g_component;
}

}  // namespace

AccountComponent::~AccountComponent() {
  AccountComponent::Finalize();
  // Cleared before it is destroyed, so that the destructor called here does not come back to it.
  Component* named = std::exchange(g_component, nullptr);
  if (named != this) delete named;
  // If the library stays mapped, the next component must make a new service: this one is shut down.
  if (g_interface_handed_out) g_service = nullptr;
}

bool AccountComponent::QueryInterface(const std::string& name, void** out) {
  if (name != "account_interface") return false;
  g_interface_handed_out = true;
  AccountManager* service = GetService();
  *out = service;
  return service != nullptr;
}

bool AccountComponent::Init(void* runtime_object) {
  try {
    ReadLogLevel();
  } catch (...) {  // Out of memory: the level stays as it is.
  }
  runtime = runtime_object;
  GetService();
  return true;
}

const char* AccountComponent::GetName() { return "account"; }

bool AccountComponent::Finalize() {
  // Nobody can have called the service, so there is nothing to wait for.
  if (!g_interface_handed_out) return true;
  AccountManagerImpl* service = GetService();
  return service == nullptr || service->Shutdown();
}

}  // namespace account

extern "C" __attribute__((visibility("default"))) Component* GetComponent();

Component* GetComponent() {
  try {
    return account::GetOrMakeComponent();
  } catch (...) {
    return nullptr;  // Out of memory.
  }
}
