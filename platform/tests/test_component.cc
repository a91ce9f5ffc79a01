// A component for tests of the runtime. It logs every call, and the configuration's key of its
// name, "alpha" or "beta", names the step that goes wrong.
#include "base/logging.h"
#include "core_fw/runtime/component.h"
#include "runtime/runtime.h"

extern "C" Component* GetComponent();

namespace {

Component* g_component = nullptr;

bool Succeeds(const std::string& step) {
  logging::LogMessage("", 0, logging::LOG_INFO).stream() << TEST_COMPONENT_NAME << " " << step;
  std::string failing;
  runtime::Runtime::GetInstance()->GetConfigOption(TEST_COMPONENT_NAME, &failing);
  return failing != step;
}

class TestComponent : public Component {
 public:
  ~TestComponent() override {
    Succeeds("destructor");
    g_component = nullptr;
  }

  bool QueryInterface(const std::string& name, void** out) override {
    if (name != TEST_COMPONENT_NAME) return false;
    *out = this;
    return true;
  }
  bool Init(void* runtime_object) override {
    return Component::Init(runtime_object) && Succeeds("Init");
  }
  bool Start() override { return Succeeds("Start"); }
  bool Finalize() override { return Succeeds("Finalize"); }
};

}  // namespace

extern "C" Component* GetComponent() {
  if (!Succeeds("GetComponent")) return nullptr;
  if (g_component == nullptr) g_component = new TestComponent;
  return g_component;
}
