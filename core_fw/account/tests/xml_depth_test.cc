// What nests deeper than an answer may, and hides it, is among the seeds of the fuzz target
// portal_answer.
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
