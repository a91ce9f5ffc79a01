// Answers that no server can give over the wire; scenarios have the others.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include "core_fw/account/src/oauth_token_client.h"
#include "core_fw/account/src/user_portal_client.h"
#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

using Lines = std::vector<std::string>;

TEST(Answers, ATokenAnswerWithoutABlankLineBeginsAtItsFourthCharacter) {
  LogCapture log;
  const struct {
    const char* response;
    const char* failure;  // Null where the answer is good.
  } cases[] = {
      {"", "response empty"},
      {"ab", "JSON response empty"},
      {"abc", "JSON response empty"},
      {"xyz{\"access_token\":\"a\",\"refresh_token\":\"r\",\"userId\":\"u\"}", nullptr},
  };
  for (const auto& c : cases) {
    Tokens tokens;
    EXPECT_EQ(ReadTokenAnswer(kHttpOk, c.response, {"F", "M"}, &tokens), c.failure == nullptr);
    EXPECT_EQ(tokens.access_token + tokens.refresh_token + tokens.user_guid,
              c.failure == nullptr ? "aru" : "");
    EXPECT_EQ(log.Take(), c.failure == nullptr
                              ? Lines{}
                              : Lines{Line(4, "F", std::string("M Error (") + c.failure + ")")});
  }
}

TEST(Answers, AnEmptyPortalAnswerLeavesWhatIsHeld) {
  LogCapture log;
  std::string out = "held";
  const NtsServers servers{&out, &out, &out, &out, &out};
  EXPECT_FALSE(ReadResultAnswer("AddUserToUserPortal", kHttpOk, ""));
  EXPECT_FALSE(ReadPeerIdAnswer(kHttpOk, "", "AABBCC", &out));
  EXPECT_FALSE(ReadNtsAnswer(kHttpOk, "", servers));
  EXPECT_EQ(out, "held");
  Lines expected;
  for (const std::string operation :
       {"AddUserToUserPortal", "GetPeerIDFromUserPortal", "GetNTSServerInfoFromUserPortal"}) {
    expected.push_back(Line(4, operation, operation + " Error (response empty)"));
  }
  EXPECT_EQ(log.Take(), expected);
}

// Says for an answer of so many levels whether its result was read.
void* ReadNestedAnswer(void* levels) {
  std::string open, close;
  for (int level = 1; level < *static_cast<int*>(levels); ++level) {
    open += "<a>";
    close += "</a>";
  }
  const std::string xml =
      "<?xml version=\"1.0\" standalone='yes'?><response><result>success"
      "</result>" +
      open + close + "</response>";
  return ReadResultAnswer("Read", kHttpOk, xml) ? levels : nullptr;
}

// What nests deeper than an answer may, and hides it, is among the seeds of the fuzz target
// portal_answer.
TEST(Answers, TheDeepestFitsAStackOf512KiB) {
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
