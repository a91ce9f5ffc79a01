#include "core_fw/account/src/xml_depth.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <string>

#include "core_fw/account/src/user_portal_client.h"
#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

constexpr char kPlain[] = "<?xml version=\"1.0\" standalone='yes'?>";

std::string Times(int count, const std::string& text) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

// What nests deeper and hides it is among the seeds of the fuzz target portal_answer.
TEST(XmlDepth, IsWhatTheLibraryWouldBuild) {
  const struct {
    const char* name;
    std::string xml;
    bool deeper;
  } cases[] = {
      {"few elements", kPlain + Times(10, "<a>"), false},
      {"one level too many", kPlain + Times(11, "<a>"), true},
      {"wide", kPlain + ("<a>" + Times(50, "<b>t</b><c/>")) + "</a>", false},
      {"opened in comments only", kPlain + Times(30, "<!-- <a> -->"), false},
      {"text that hides nothing", kPlain + Times(30, "<a>&#65;&#xe4;\xc3\xa4 &amp; '\"</a>"),
       false},
      {"processing instructions", kPlain + ("<?foo x?>" + Times(30, "<a/>")), false},
      {"unfinished", kPlain + Times(11, "<a></a>") + "<a b='", false},
      {"second declaration", kPlain + Times(11, "<?xml version='></a>'?><a></a>"), false},
      {"odd declaration", "<?xml foo=\">" + Times(11, "<a></a>") + "?>", false},
      {"quote without a name", "<?xml foo\" version=\"?>" + Times(11, "<a>"), false},
      {"blanks around the equals sign", "<?xml version = '1.0' ?>" + Times(11, "<a></a>"), false},
      {"a byte that is not UTF-8", kPlain + Times(11, "<a>B\xe4lle</a>"), false},
      {"a byte that swallows markup", kPlain + Times(11, "<a>\xfc</a><a>\xe4</a>"), true},
      {"Latin-1, which swallows nothing",
       "<?xml version='1.0' encoding='ISO-8859-1'?>" + Times(11, "<a>\xe4</a>"), false},
      {"a reference without its end", kPlain + Times(11, "<a>&#6</a>"), false},
      {"a wrong end tag, where the library stops", kPlain + ("<a></b>" + Times(11, "<a>")), false},
  };
  for (const auto& c : cases) EXPECT_EQ(XmlNestsDeeperThan(c.xml, 10), c.deeper) << c.name;
}

// Says for an answer of so many levels whether its result was read.
void* ReadNestedAnswer(void* levels) {
  const int inner = *static_cast<int*>(levels) - 1;
  const std::string xml = kPlain + ("<response><result>success</result>" + Times(inner, "<a>")) +
                          Times(inner, "</a>") + "</response>";
  return ReadResultAnswer("Read", kHttpOk, xml) ? levels : nullptr;
}

TEST(XmlDepth, TheDeepestAnswerFitsAStackOf512KiB) {
  LogCapture log;
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
#ifdef QORN_SANITIZED
  constexpr int kStackKiB = 8 * 512;  // Its frames are several times larger.
#else
  constexpr int kStackKiB = 512;
#endif
  pthread_attr_setstacksize(&attributes, size_t{kStackKiB} << 10);
  for (int levels : {1000, 1001, 200000}) {
    pthread_t thread;
    void* read = nullptr;
    ASSERT_EQ(pthread_create(&thread, &attributes, ReadNestedAnswer, &levels), 0);
    pthread_join(thread, &read);
    EXPECT_EQ(read != nullptr, levels == 1000) << levels;
  }
  pthread_attr_destroy(&attributes);
}

}  // namespace
}  // namespace account
