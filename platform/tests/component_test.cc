#include "core_fw/runtime/component.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/stack_trace.h"
#include "tests/test_support.h"

namespace {

class Plain : public Component {
 public:
  bool Finalize() override { return true; }
  void* GetRuntime() const { return runtime; }
};

TEST(Component, AnswersWithTheDefaultsOfTheBase) {
  LogCapture log;
  Plain component;
  int object = 0;
  void* interface = &object;
  EXPECT_FALSE(component.QueryInterface("any", &interface));
  EXPECT_EQ(interface, &object);
  EXPECT_TRUE(component.Init(&object));
  EXPECT_EQ(component.GetRuntime(), &object);
  EXPECT_FALSE(component.Init(nullptr));
  EXPECT_EQ(component.GetRuntime(), nullptr);
  EXPECT_TRUE(component.Start());
  EXPECT_STREQ(component.GetName(), "");
  EXPECT_EQ(component.QueryState(), 0);
}

TEST(Component, LogsItsDestructionFromSeverityFour) {
  for (const int level : {-1, 4, 5}) {
    LogCapture log;
    logging::SetMinLogLevel(level);
    { Plain component; }
    logging::SetMinLogLevel(0);
    const std::vector<std::string> texts = log.Take();
    ASSERT_EQ(texts.size(), level <= 4 ? 1U : 0U) << level;
    if (texts.empty()) continue;
    EXPECT_THAT(texts[0], testing::StartsWith(": COMPONENT_DESTROY is called\t"));
    EXPECT_THAT(texts[0], testing::HasSubstr("Component::~Component()"));
  }
}

__attribute__((noinline)) std::string TraceFromDepth(int depth) {
  std::string text = depth == 0 ? base::debug::StackTrace().ToString() : TraceFromDepth(depth - 1);
  // Keeps the call from becoming a jump.
  asm volatile("" : : "r"(text.data()) : "memory");
  return text;
}

TEST(StackTrace, EndsAfterSixtyTwoFrames) {
  const std::string text = TraceFromDepth(100);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 62);
}

}  // namespace
