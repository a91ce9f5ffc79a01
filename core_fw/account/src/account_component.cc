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

Component* g_component = nullptr;
AccountManagerImpl* g_service = nullptr;
std::atomic<bool> g_interface_handed_out{false};

// The service lives here and is never destroyed: others may hold a pointer to it until the
// library is unmapped.
alignas(AccountManagerImpl) unsigned char g_service_storage[sizeof(AccountManagerImpl)];

// Null, logged, when memory or threads end while it is made; the next call tries again.
AccountManagerImpl* GetService() noexcept {
  if (g_service != nullptr) return g_service;
  auto* service = new (g_service_storage) AccountManagerImpl;
  try {
    service->Init();
    g_service = service;
  } catch (...) {
    service->Shutdown();
    service->~AccountManagerImpl();
    try {
      LogFailure(FROM_HERE, "Init", AccountResultMessage(kAccountFailure));
    } catch (...) {  // The line is lost too.
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
  // Taken before it is destroyed, so that a destructor entered from here finds nothing to do.
  Component* named = std::exchange(g_component, nullptr);
  if (named != this) delete named;
  // A component that the still mapped library makes after this one starts its service afresh.
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
  } catch (...) {  // Memory ended; the level stays.
  }
  runtime = runtime_object;
  GetService();
  return true;
}

const char* AccountComponent::GetName() { return "account"; }

bool AccountComponent::Finalize() {
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
    return nullptr;  // Memory ended.
  }
}
