#include "core_fw/runtime/component.h"

#include <gtest/gtest.h>

#include "tests/test_support.h"

namespace {

class Plain : public Component {
 public:
  bool Finalize() override { return true; }
  void* GetRuntime() const { return runtime; }
};

TEST(Component, HasDefaultsAndLogsItsDestructionFromSeverityFour) {
  for (const int level : {-1, 4, 5}) {
    LogCapture log;
    logging::SetMinLogLevel(level);
    {
      Plain component;
      int object = 0;
      void* out = &object;
      EXPECT_TRUE(!component.QueryInterface("any", &out) && out == &object);
      EXPECT_TRUE(component.Init(&object) && component.GetRuntime() == &object);
      EXPECT_TRUE(!component.Init(nullptr) && component.GetRuntime() == nullptr);
      EXPECT_TRUE(component.Start() && component.QueryState() == 0);
      EXPECT_STREQ(component.GetName(), "");
    }
    logging::SetMinLogLevel(0);
    const std::string text = log.TakeText();
    EXPECT_EQ(text.starts_with(": COMPONENT_DESTROY is called\t"), level <= 4) << level;
    EXPECT_EQ(text.find("Component::~Component()") != std::string::npos, level <= 4) << text;
  }
}

}  // namespace
