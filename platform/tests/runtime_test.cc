#include "runtime/runtime.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <tuple>
#include <utility>

#include "base/logging.h"
#include "core_fw/runtime/component.h"
#include "evt/event_manager.h"
#include "tests/test_support.h"

namespace {

using runtime::Runtime;
using std::string_literals::operator""s;

#ifdef QORN_SANITIZED
constexpr bool kUnmaps = false;
#else
constexpr bool kUnmaps = true;
#endif

class RuntimeTest : public testing::Test {
 protected:
  RuntimeTest() {
    logging::SetLogMessageHandler(
        [this](int, const char*, int, size_t start, const std::string& line) {
          (line[start] == ':' ? destructions_ : calls_) += line.substr(start);
          return true;
        });
  }
  ~RuntimeTest() override {
    Runtime::Destroy();
    logging::SetLogMessageHandler({});
  }

  Runtime* Create(const std::string& text) {
    WriteFile(file_, text);
    return Runtime::Create(file_, &error_);
  }

  std::string calls_, destructions_;
  const TestFolder folder_;
  const std::string file_ = folder_.File("config.xml");
  std::string error_;
};

class Plain : public Component {
 public:
  bool Finalize() override { return true; }
  void* GetRuntime() const { return runtime; }
};

TEST_F(RuntimeTest, AComponentHasDefaultsAndLogsTheStackOfItsDestruction) {
  {
    Plain component;
    int object = 0;
    void* out = &object;
    EXPECT_TRUE(component.Init(&object) && component.GetRuntime() == &object);
    EXPECT_TRUE(!component.Init(nullptr) && component.GetRuntime() == nullptr);
    EXPECT_TRUE(!component.QueryInterface("any", &out) && out == &object && component.Start());
    EXPECT_TRUE(component.QueryState() == 0 && component.GetName() == ""s);
  }
  EXPECT_NE(destructions_.find("Component::~Component()"), std::string::npos) << destructions_;
}

TEST_F(RuntimeTest, ReadsTheConfiguration) {
  Runtime* const made = Runtime::Create(TEST_DATA "config.xml", &error_);
  ASSERT_NE(made, nullptr) << error_;
  std::string read;
  for (const char* key : {"a", "empty", "blank", "data", "commented", "text", "A", "config"}) {
    std::string value = "untouched";
    read += (made->GetConfigOption(key, &value) ? "|" : "!") + value;
  }
  EXPECT_EQ(read, "|1|||<z>|xy|two words & ä!untouched!untouched");
  EXPECT_EQ(Create("<config/>"), nullptr);
  EXPECT_EQ(error_, file_ + ": there is a runtime already");
  EXPECT_EQ(Runtime::GetInstance(), made);
}

TEST_F(RuntimeTest, RefusesABadConfigurationWithItsPlace) {
  auto cases = ReadCases(TEST_DATA "bad_config_cases.txt");
  cases.emplace_back("<config>\n<a>\0</a></config>"s, "2:4: a zero byte");
  std::string deep = "<config>\n";
  while (deep.size() < 300000) deep += "<a>";
  cases.emplace_back(deep, "2:2998: more than 1000 elements");
  cases.emplace_back("<config>\r\n\r<a>\0</a></config>"s, "3:4: a zero byte");
  for (const auto& [text, error] : cases) {
    EXPECT_EQ(Create(text), nullptr) << text;
    EXPECT_TRUE(error_.starts_with(file_ + ":" + error)) << error_;
    EXPECT_EQ(error_.find('\n'), std::string::npos);
  }
  EXPECT_EQ(Runtime::Create("absent", &error_), nullptr);
  EXPECT_EQ(error_, "absent: cannot be read: No such file or directory");
  EXPECT_EQ(Runtime::Create("/", &error_), nullptr);
  EXPECT_EQ(error_, "/: cannot be read: Is a directory");
  EXPECT_EQ(Runtime::GetInstance(), nullptr);
}

TEST_F(RuntimeTest, SaysWhyALibraryDoesNotLoad) {
  const char* const kCases[][3] = {
      {"./absent.so", "", ": cannot be loaded: ./absent.so: cannot open"},
      {"libm.so.6", "", ": has no function GetComponent"},
      {TEST_COMPONENT_ALPHA, "GetComponent", ": GetComponent gave no component"},
      {TEST_COMPONENT_ALPHA, "Init", ": did not start"},
      {TEST_COMPONENT_ALPHA, "Start", ": did not start"}};
  for (const auto& [library, failing_step, error] : kCases) {
    Runtime* const made = Create("<config><alpha>"s + failing_step + "</alpha></config>");
    EXPECT_FALSE(made->LoadComponent(library, &error_));
    EXPECT_TRUE(error_.starts_with(library + std::string(error))) << error_;
    void* out = nullptr;
    EXPECT_FALSE(made->QueryInterface("alpha", &out));
    Runtime::Destroy();
  }
}

TEST_F(RuntimeTest, EndsComponentsInReverseOrder) {
  Runtime* const made = Create("<config/>");
  ASSERT_TRUE(made->LoadComponent(TEST_COMPONENT_ALPHA, &error_)) << error_;
  ASSERT_TRUE(made->LoadComponent(TEST_COMPONENT_BETA, &error_)) << error_;
  EXPECT_FALSE(made->LoadComponent(TEST_COMPONENT_ALPHA, &error_));
  EXPECT_EQ(error_, TEST_COMPONENT_ALPHA ": is loaded already");
  EXPECT_EQ(std::exchange(calls_, ""),
            "alpha GetComponent\nalpha Init\nalpha Start\n"
            "beta GetComponent\nbeta Init\nbeta Start\nalpha GetComponent\n");
  void* out = this;
  EXPECT_FALSE(made->QueryInterface("gamma", &out));
  EXPECT_EQ(out, this);
  EXPECT_TRUE(made->QueryInterface("beta", &out));
  EXPECT_NE(out, this);

  evt::EventManager* const bus = evt::EventManager::GetInstance();
  const int listener = bus->AddListener(1, [this, ending = gettid()](int, const Pickle&) {
    while (!IsAsleep(ending)) sched_yield();  // It waits for the bus before it ends anything.
    calls_ += "event\n";
  });
  Publish(1, "");
  Runtime::Destroy();
  bus->RemoveListener(listener);
  EXPECT_EQ(calls_, "event\nbeta Finalize\nalpha Finalize\nbeta destructor\nalpha destructor\n");
  EXPECT_EQ(Runtime::GetInstance(), nullptr);
  std::string value;
  EXPECT_FALSE(made->GetConfigOption("a", &value));  // Its memory stays.
}

TEST_F(RuntimeTest, UnmapsALibraryThatIsThrough) {
  const std::tuple<bool, std::string, bool> kCases[] = {
      {true, "", !kUnmaps}, {true, "Finalize", true}, {false, "", true}};
  for (const auto& [ask, failing_step, mapped] : kCases) {
    // A file of its own: what stays mapped does not reach the next case.
    const std::string library = folder_.File((ask ? "asked" : "unasked") + failing_step);
    std::filesystem::copy_file(TEST_COMPONENT_BETA, library);
    Runtime* const made = Create("<config><beta>" + failing_step + "</beta></config>");
    ASSERT_TRUE(made->LoadComponent(library, &error_)) << error_;
    void* out = nullptr;
    EXPECT_EQ(ask && made->QueryInterface("beta", &out), ask);
    Runtime::Destroy();
    void* const handle = dlopen(library.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    EXPECT_EQ(handle != nullptr, mapped) << library;
    if (handle != nullptr) dlclose(handle);
  }
}

}  // namespace
