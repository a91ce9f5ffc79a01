#include "core_fw/account/src/https_request.h"

#include <curl/curl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

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

TEST_F(HttpsRequestTest, TakesACertificateThatIsMadeForAnotherHost) {
  devcloud::Options options;
  options.certificate_address = "127.0.0.9";
  std::string error;
  const auto other = devcloud::Cloud::Start(options, &error);
  ASSERT_NE(other, nullptr) << error;
  SendRequest({}, other->https_url() + "/token", 1, "", &result_);
  EXPECT_EQ(result_, kHttpBadRequest);
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

}  // namespace
}  // namespace account
