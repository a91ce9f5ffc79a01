#include "runtime/runtime.h"

#include <dlfcn.h>

#include <algorithm>
#include <atomic>
#include <utility>

#include "core_fw/runtime/component.h"
#include "evt/event_manager.h"
#include "runtime/config_file.h"

namespace runtime {

namespace {

std::atomic<Runtime*> g_runtime{nullptr};

struct DlCloser {
  void operator()(void* library) const { dlclose(library); }
};
using LibraryHandle = std::unique_ptr<void, DlCloser>;

#ifdef QORN_SANITIZED
// Sanitizers report function names only for libraries that are still mapped at the end.
constexpr int kOpenFlags = RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE;
#else
constexpr int kOpenFlags = RTLD_NOW | RTLD_LOCAL;
#endif

bool Fail(const std::string& library, const std::string& reason, std::string* error) {
  *error = library + ": " + reason;
  return false;
}

}  // namespace

struct Runtime::LoadedComponent {
  LibraryHandle library;
  // Destroyed by Runtime::End; borrowed from the library until then.
  Component* component = nullptr;
  std::atomic<bool> handed_out{false};
  bool finalized = false;
};

Runtime::Runtime(Config config) : config_(std::move(config)) {}

Runtime* Runtime::Create(const std::string& config_file, std::string* error) {
  if (g_runtime != nullptr) {
    *error = config_file + ": there is a runtime already";
    return nullptr;
  }
  Config config;
  if (!ReadConfigFile(config_file, &config, error)) return nullptr;
  g_runtime = new Runtime(std::move(config));
  return g_runtime;
}

Runtime* Runtime::GetInstance() { return g_runtime; }

void Runtime::Destroy() {
  Runtime* const ended = g_runtime;
  if (ended == nullptr) return;
  evt::EventManager::GetInstance()->Flush();
  const bool nothing_runs = ended->End();
  g_runtime = nullptr;
  if (nothing_runs) {
    delete ended;
    return;
  }
  // Never freed: a component's thread may still be running and reading its configuration.
  static auto* const all_kept = new std::vector<Runtime*>;
  all_kept->push_back(ended);
}

bool Runtime::GetConfigOption(const std::string& key, std::string* value) const {
  const auto found = config_.find(key);
  if (found == config_.end()) return false;
  *value = found->second;
  return true;
}

bool Runtime::LoadComponent(const std::string& library, std::string* error) {
  LibraryHandle handle(dlopen(library.c_str(), kOpenFlags));
  if (!handle) {
    const char* reason = dlerror();
    return Fail(library, std::string("cannot be loaded: ") + (reason ? reason : ""), error);
  }
  const auto get_component =
      reinterpret_cast<Component* (*)()>(dlsym(handle.get(), "GetComponent"));
  if (get_component == nullptr) {
    return Fail(library, "has no function GetComponent", error);
  }
  Component* const component = get_component();
  if (component == nullptr) return Fail(library, "GetComponent gave no component", error);
  if (IsLoaded(component)) return Fail(library, "is loaded already", error);

  const auto loaded = std::make_shared<LoadedComponent>();
  loaded->component = component;
  loaded->library = std::move(handle);
  if (!component->Init(this) || !component->Start()) {
    // Its threads may be running, so it must stay mapped.
    static_cast<void>(loaded->library.release());
    return Fail(library, "did not start", error);
  }
  base::AutoLock hold(lock_);
  components_.push_back(loaded);
  return true;
}

bool Runtime::QueryInterface(const std::string& name, void** out) {
  for (const auto& loaded : Components()) {
    if (!loaded->component->QueryInterface(name, out)) continue;
    loaded->handed_out = true;
    return true;
  }
  return false;
}

// A copy, so that components are called without the lock and may call the runtime themselves.
std::vector<std::shared_ptr<Runtime::LoadedComponent>> Runtime::Components() {
  base::AutoLock hold(lock_);
  return components_;
}

bool Runtime::IsLoaded(const Component* component) {
  for (const auto& loaded : Components()) {
    if (loaded->component == component) return true;
  }
  return false;
}

bool Runtime::End() {
  // In reverse, because later components may use the interfaces of earlier ones.
  auto ending = Components();
  std::reverse(ending.begin(), ending.end());
  for (const auto& loaded : ending) loaded->finalized = loaded->component->Finalize();
  {
    base::AutoLock hold(lock_);
    components_.clear();
  }
  bool nothing_runs = true;
  for (const auto& loaded : ending) {
    delete loaded->component;
    if (loaded->handed_out && loaded->finalized) continue;
    static_cast<void>(loaded->library.release());
    nothing_runs = false;
  }
  return nothing_runs;
}

}  // namespace runtime
