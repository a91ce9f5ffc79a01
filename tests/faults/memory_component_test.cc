// The component's life from GetComponent to its destruction while memory or threads end, on the
// runtime's thread and on the worker's.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/logging.h"
#include "core_fw/account/include/account_manager.h"
#include "core_fw/account/tests/test_support.h"
#include "core_fw/runtime/component.h"
#include "runtime/runtime.h"
#include "tests/faults/memory_faults.h"

namespace faults {
namespace {

const std::string kName = "account_interface";  // Made while no allocation fails.

class ComponentMemory : public account::AccountTest {
 protected:
  ComponentMemory() {
    // What the worker does first.
    config_["account_enable_MIRLO_network_setting"] = "on";
    cloud_->AddGateway(account::kGatewayAddress);
    UseNamedZone();
    StartRuntime();
    logging::SetLogMessageHandler(
        [](int, const char*, int, size_t, const std::string&) { return true; });
  }

  // From the first call to the last. Whether the interface was there.
  static bool Live(Component* (*get_component)(), std::vector<std::string>* users) {
    Component* const component = get_component();
    if (component == nullptr) return false;
    EXPECT_TRUE(component->Init(runtime::Runtime::GetInstance()));
    void* found = nullptr;
    const bool there = component->QueryInterface(kName, &found);
    EXPECT_EQ(there, found != nullptr);
    if (users != nullptr) {
      EXPECT_EQ(static_cast<AccountManager*>(found)->GetAllUsersUUID(users), 1);
    }
    EXPECT_TRUE(component->Finalize());
    delete component;
    return there;
  }
};

TEST_F(ComponentMemory, TheNextComponentWorks) {
  const std::string path = account::LibraryPath();
  int met = 0, failed = 0;
  for (const Side side : {Side::kCaller, Side::kStarted}) {
    for (const bool lasting : {false, true}) {
      for (int nth = 1; !HasFailure(); ++nth) {
        SCOPED_TRACE(testing::Message() << "side " << static_cast<int>(side) << ", allocation "
                                        << nth << (lasting ? " and all after" : ""));
        void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << dlerror();
        auto* const get_component =
            reinterpret_cast<Component* (*)()>(dlsym(library, "GetComponent"));
        UseMemoryAs(Side::kCaller);
        StartMemoryFault(side, nth, lasting);
        if (!Live(get_component, nullptr)) ++failed;
        const bool ended = EndMemoryFault() >= 0;
        UseMemoryAs(Side::kNone);
        std::vector<std::string> users;
        EXPECT_TRUE(Live(get_component, &users));
        EXPECT_THAT(users, testing::ElementsAre("qornsystem"));
        EXPECT_EQ(dlclose(library), 0);
        EXPECT_EQ(dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr);
        EXPECT_LE(TakeHeldAllocations(), side == Side::kStarted ? kLostByXml : 0);
        if (!ended) break;
        ++met;
      }
    }
  }
  EXPECT_GT(failed, 0);
  RecordProperty("faults", met);
}

}  // namespace
}  // namespace faults
