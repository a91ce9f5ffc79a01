#include "runtime/runtime.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <sstream>

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
  // The components' calls, without the lines of destruction, whose text is a stack.
  std::string Calls() {
    std::istringstream lines(log_.TakeText());
    std::string calls;
    for (std::string line; std::getline(lines, line);) {
      if (!line.empty() && line[0] != ':' && line[0] != '\t') calls += line + ", ";
    }
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
  const char* const kCases[][2] = {{"a", "1"},          {"empty", ""},
                                   {"blank", ""},       {"data", "<z>"},
                                   {"commented", "xy"}, {"text", "two words & ä"},
                                   {"A", "untouched"},  {"config", "untouched"}};
  for (const auto& [key, expected] : kCases) {
    std::string value = "untouched";
    EXPECT_EQ(made->GetConfigOption(key, &value), expected != "untouched"s) << key;
    EXPECT_EQ(value, expected) << key;
  }
  EXPECT_EQ(Create("<config/>"), nullptr);
  EXPECT_EQ(error_, file_ + ": there is a runtime already");
  EXPECT_EQ(Runtime::GetInstance(), made);
}

TEST_F(RuntimeTest, RefusesABadConfigurationWithItsPlace) {
  const std::pair<std::string, std::string> kCases[] = {
      {"", "1:1: "},
      {"\n garbage <config/>", "2:2: "},
      {"<config>\n  <a>1</b>\n</config>", "2:7: Error reading end tag."},
      {"<config>\n <a>1</a>\n", "3:1: Error reading end tag."},
      {"<config><a>1</a>\n<", "2:2: "},
      {"<config>\n<a>\0</a></config>"s, "2:4: a zero byte"},
      {"<!-- c -->\n <settings/>", "2:2: the root element is not \"config\""},
      {"\n<!-- c -->", "2:1: the root element is not \"config\""},
      {"<config/>\n <config/>", "2:2: not a part of the element \"config\""},
      {"<config/>\nmore", "2:1: not a part of the element \"config\""},
      {"<config>\n <3></config>", "2:2: not a part of the element \"config\""}};
  for (const auto& [text, error] : kCases) {
    EXPECT_EQ(Create(text), nullptr) << text;
    EXPECT_TRUE(error_.starts_with(file_ + ":" + error)) << error_;
    EXPECT_EQ(error_.find('\n'), std::string::npos);
  }
  for (const std::string name : {"absent", ""}) {
    EXPECT_EQ(Runtime::Create(folder_.File(name), &error_), nullptr);
    EXPECT_EQ(error_, folder_.File(name) + ": cannot be read: " +
                          (name.empty() ? "Is a directory" : "No such file or directory"));
  }
  EXPECT_EQ(Runtime::GetInstance(), nullptr);
}

TEST_F(RuntimeTest, SaysWhyALibraryDoesNotLoad) {
  const char* const kCases[][3] = {
      {"./absent.so", "", ": cannot be loaded: ./absent.so: cannot open"},
      {TEST_COMPONENT_WITHOUT_ENTRY, "", ": has no function GetComponent"},
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
  EXPECT_EQ(Calls(),
            "alpha GetComponent, alpha Init, alpha Start, beta GetComponent, beta Init, "
            "beta Start, alpha GetComponent, ");
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
  EXPECT_EQ(Calls(), "event, beta Finalize, alpha Finalize, beta destructor, alpha destructor, ");
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
