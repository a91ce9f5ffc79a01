// What of requests to the cloud, and of its answers, no scenario reaches.
#include <curl/curl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <cstdlib>
#include <cstring>

#include "core_fw/account/src/https_request.h"
#include "core_fw/account/src/oauth_token_client.h"
#include "core_fw/account/src/user_portal_client.h"
#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

using testing::ElementsAre;
using testing::MatchesRegex;
using testing::StartsWith;

class HttpsRequestTest : public AccountTest {
 protected:
  HttpsRequestTest() { StartTransport(); }
  ~HttpsRequestTest() override { StopTransport(); }

  HttpResult result_ = kHttpOtherStatus;
};

TEST_F(HttpsRequestTest, ClassifiesTheStatusAndReturnsTheWholeAnswer) {
  const std::pair<int, HttpResult> cases[] = {
      {200, kHttpOk},         {201, kHttpOtherStatus}, {204, kHttpNoContent},
      {400, kHttpBadRequest}, {401, kHttpOtherStatus}, {403, kHttpForbidden},
      {404, kHttpNotFound},   {500, kHttpOtherStatus}, {503, kHttpOtherStatus}};
  for (const auto& [status, result] : cases) {
    devcloud::Fault fault;
    fault.status = status;
    fault.body = status == 204 ? "" : "the body";
    fault.header_lines = {"X-Mark: here"};
    cloud_->AddFault(fault);
    EXPECT_THAT(SendRequest({}, cloud_->http_url() + "/token", 1, "body=1", &result_),
                MatchesRegex("HTTP/1.1 " + std::to_string(status) + " .*\r\nX-Mark: here\r\n\r\n" +
                             fault.body));
    EXPECT_EQ(result_, result) << status;
  }
}

TEST(HttpsRequest, WithoutAHandleTheResultIsUntouched) {
  static bool fails = false;
  ASSERT_EQ(curl_global_init_mem(
                CURL_GLOBAL_DEFAULT, malloc, free, realloc, strdup,
                [](size_t count, size_t size) { return fails ? nullptr : calloc(count, size); }),
            CURLE_OK);
  LogCapture log;
  HttpResult result = kHttpOtherStatus;
  fails = true;
  EXPECT_EQ(SendRequest({}, "http://127.0.0.1:9", 1, "", &result), "");
  fails = false;
  EXPECT_EQ(result, kHttpOtherStatus);
  EXPECT_THAT(log.Take(), ElementsAre(Line(4, "SendRequest", "Cannot user CURL")));
  curl_global_cleanup();
}

TEST_F(HttpsRequestTest, WithoutThePostFlagItIsAPlainGet) {
  SendRequest({"X-One: 1", "X-Two: 2"}, cloud_->http_url() + "/token", 0, "unused", &result_);
  const devcloud::RecordedRequest request = cloud_->requests().at(0);
  EXPECT_EQ(request.method, "GET");
  EXPECT_EQ(request.body, "");
  EXPECT_THAT(request.header_lines,
              ElementsAre(StartsWith("Host: 127.0.0.1:"), "Accept: */*", "X-One: 1", "X-Two: 2"));
}

// Answers that no server can give over the wire.
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
