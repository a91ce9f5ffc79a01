#include "runtime/runtime.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
  ~RuntimeTest() override { Runtime::Destroy(); }

  Runtime* Create(const std::string& text) {
    WriteFile(file_, text);
    error_.clear();
    return Runtime::Create(file_, &error_);
  }
  // Without lines of destruction, whose text is a stack.
  std::vector<std::string> Calls() {
    std::vector<std::string> calls = log_.Take();
    std::erase_if(calls, [](const std::string& text) { return text[0] == ':'; });
    return calls;
  }
  static bool IsMapped(const std::string& library) {
    void* handle = dlopen(library.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (handle != nullptr) dlclose(handle);
    return handle != nullptr;
  }

  LogCapture log_;
  TestFolder folder_;
  const std::string file_ = folder_.File("config.xml");
  std::string error_;
};

TEST_F(RuntimeTest, ReadsTheConfiguration) {
  Runtime* const made = Create(
      "<?xml version=\"1.0\"?>\n<!DOCTYPE config>\n<!-- c -->\n<config>\n <a>1</a><a>2</a>\n"
      "<empty/><blank>  </blank><text> two  words &amp; &#228; </text>"
      "<commented>x<!-- c -->y</commented><data><![CDATA[<z>]]></data></config>\n");
  ASSERT_NE(made, nullptr) << error_;
  EXPECT_EQ(Runtime::GetInstance(), made);
  const struct {
    const char* key;
    const char* value;
  } kCases[] = {{"a", "1"},      {"empty", ""},      {"blank", ""}, {"text", "two words & ä"},
                {"data", "<z>"}, {"commented", "xy"}};
  for (const auto& c : kCases) {
    std::string value = "untouched";
    EXPECT_TRUE(made->GetConfigOption(c.key, &value)) << c.key;
    EXPECT_EQ(value, c.value) << c.key;
  }
  for (const char* key : {"A", "config", "", "absent"}) {
    std::string value = "untouched";
    EXPECT_FALSE(made->GetConfigOption(key, &value)) << key;
    EXPECT_EQ(value, "untouched");
  }
  EXPECT_EQ(Create("<config/>"), nullptr);
  EXPECT_EQ(error_, file_ + ": there is a runtime already");
  EXPECT_EQ(Runtime::GetInstance(), made);
}

TEST_F(RuntimeTest, RefusesABadConfigurationWithItsPlace) {
  const struct {
    std::string text;
    const char* error;
  } kCases[] = {
      {"", ":1:1: "},
      {"\n garbage <config/>", ":2:2: "},
      {"<config>\n  <a>1</b>\n</config>", ":2:7: Error reading end tag."},
      {"<config>\n <a>1</a>\n", ":3:1: Error reading end tag."},
      {"<config>\n <a x></a></config>", ":2:6: Error reading Attributes."},
      {"<config><a>1</a>\n<", ":2:2: "},
      {"<config>\n<a>\0</a></config>"s, ":2:4: a zero byte"},
      {"<config/>\0"s, ":1:10: a zero byte"},
      {"<!-- c -->\n <settings/>", ":2:2: the root element is not \"config\""},
      {"\n<!-- c -->", ":2:1: the root element is not \"config\""},
      {"<config/>\n <config/>", ":2:2: not a part of"},
      {"<config/>\nmore", ":2:1: not a part of"},
      {"<config></config>\n</config>", ":2:1: not a part of"},
      {"<config>\n <3></config>", ":2:2: not a part of"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(Create(c.text), nullptr) << c.text;
    EXPECT_THAT(error_, testing::StartsWith(file_ + c.error)) << c.text;
    EXPECT_EQ(error_.find('\n'), std::string::npos);
  }
  EXPECT_EQ(Runtime::Create(folder_.File("absent"), &error_), nullptr);
  EXPECT_EQ(error_, folder_.File("absent") + ": cannot be read: No such file or directory");
  EXPECT_EQ(Runtime::Create(folder_.File(""), &error_), nullptr);
  EXPECT_EQ(error_, folder_.File("") + ": cannot be read: Is a directory");
  EXPECT_EQ(Runtime::GetInstance(), nullptr);
}

TEST_F(RuntimeTest, SaysWhyALibraryDoesNotLoad) {
  const struct {
    const char* library;
    const char* failing_step;
    const char* error;
  } kCases[] = {
      {"./no_such_library.so", "", ": cannot be loaded: ./no_such_library.so: cannot open"},
      {TEST_COMPONENT_WITHOUT_ENTRY, "", ": has no function GetComponent"},
      {TEST_COMPONENT_ALPHA, "GetComponent", ": GetComponent gave no component"},
      {TEST_COMPONENT_ALPHA, "Init", ": did not start"},
      {TEST_COMPONENT_ALPHA, "Start", ": did not start"},
  };
  for (const auto& c : kCases) {
    ASSERT_NE(Create("<config><alpha>"s + c.failing_step + "</alpha></config>"), nullptr);
    EXPECT_FALSE(Runtime::GetInstance()->LoadComponent(c.library, &error_));
    EXPECT_THAT(error_, testing::StartsWith(c.library + std::string(c.error)));
    void* out = nullptr;
    EXPECT_FALSE(Runtime::GetInstance()->QueryInterface("alpha", &out));
    Runtime::Destroy();
  }
}

TEST_F(RuntimeTest, EndsComponentsInReverseOrder) {
  Runtime* const made = Create("<config/>");
  ASSERT_TRUE(made->LoadComponent(TEST_COMPONENT_ALPHA, &error_)) << error_;
  ASSERT_TRUE(made->LoadComponent(TEST_COMPONENT_BETA, &error_)) << error_;
  EXPECT_FALSE(made->LoadComponent(TEST_COMPONENT_ALPHA, &error_));
  EXPECT_EQ(error_, TEST_COMPONENT_ALPHA ": is loaded already");
  EXPECT_THAT(Calls(), testing::ElementsAre("alpha GetComponent\n", "alpha Init\n", "alpha Start\n",
                                            "beta GetComponent\n", "beta Init\n", "beta Start\n",
                                            "alpha GetComponent\n"));
  void* out = this;
  EXPECT_FALSE(made->QueryInterface("gamma", &out));
  EXPECT_EQ(out, this);
  EXPECT_TRUE(made->QueryInterface("beta", &out));
  EXPECT_NE(out, this);

  evt::EventManager* const bus = evt::EventManager::GetInstance();
  const int listener = bus->AddListener(1, [](int, const Pickle&) {
    logging::LogMessage(__FILE__, __LINE__, logging::LOG_INFO).stream() << "event";
  });
  evt::Event* const event = bus->CreateEvent(1);
  bus->Publish(event);
  bus->ReleaseEvent(event);
  Runtime::Destroy();
  bus->RemoveListener(listener);
  EXPECT_THAT(Calls(), testing::ElementsAre("event\n", "beta Finalize\n", "alpha Finalize\n",
                                            "beta destructor\n", "alpha destructor\n"));
  EXPECT_EQ(Runtime::GetInstance(), nullptr);
  std::string value;
  EXPECT_FALSE(made->GetConfigOption("a", &value));  // Its memory stays.
}

TEST_F(RuntimeTest, UnmapsALibraryThatIsThrough) {
  const struct {
    bool ask;
    const char* failing_step;
    bool mapped;
  } kCases[] = {{true, "", !kUnmaps}, {true, "Finalize", true}, {false, "", true}};
  for (const auto& c : kCases) {
    // A file of its own: what stays mapped does not reach the next case.
    const std::string library = folder_.File("beta"s + (c.ask ? "_asked" : "") + c.failing_step);
    std::filesystem::copy_file(TEST_COMPONENT_BETA, library);
    Runtime* const made = Create("<config><beta>"s + c.failing_step + "</beta></config>");
    ASSERT_TRUE(made->LoadComponent(library, &error_)) << error_;
    void* out = nullptr;
    if (c.ask) {
      ASSERT_TRUE(made->QueryInterface("beta", &out));
    }
    Runtime::Destroy();
    EXPECT_EQ(IsMapped(library), c.mapped) << library;
  }
}

}  // namespace
