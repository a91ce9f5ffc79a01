#include "core_fw/account/src/https_request.h"

#include <curl/curl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

using devcloud::Fault;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class HttpsRequestTest : public AccountTest {
 protected:
  HttpsRequestTest() { StartTransport(); }
  ~HttpsRequestTest() override { StopTransport(); }

  // The answer of a cloud that meets the fault.
  std::string Post(const Fault& fault) {
    cloud_->AddFault(fault);
    result_ = kHttpOtherStatus;
    return SendRequest({"Accept: application/json"}, cloud_->http_url() + "/token", 1, "body=1",
                       &result_);
  }

  HttpResult result_ = kHttpOtherStatus;
};

TEST_F(HttpsRequestTest, ClassifiesTheStatusAndReturnsTheWholeAnswer) {
  const std::pair<int, HttpResult> cases[] = {
      {200, kHttpOk},         {201, kHttpOtherStatus}, {204, kHttpNoContent},
      {400, kHttpBadRequest}, {401, kHttpOtherStatus}, {403, kHttpForbidden},
      {404, kHttpNotFound},   {500, kHttpOtherStatus}, {503, kHttpOtherStatus}};
  for (const auto& [status, result] : cases) {
    Fault fault;
    fault.status = status;
    fault.body = status == 204 ? "" : "the body";
    fault.header_lines = {"X-Mark: here"};
    const std::string response = Post(fault);
    EXPECT_EQ(result_, result) << status;
    EXPECT_THAT(response, StartsWith("HTTP/1.1 " + std::to_string(status)));
    EXPECT_THAT(response, HasSubstr("\r\nX-Mark: here\r\n"));
    EXPECT_THAT(response, HasSubstr("\r\n\r\n" + fault.body));
  }
  EXPECT_THAT(log_.Take(), IsEmpty());
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

TEST_F(HttpsRequestTest, KeepsEveryHeaderBlockOfARedirect) {
  Fault fault;
  fault.kind = Fault::Kind::kRedirect;
  fault.times = 3;
  const std::string response = Post(fault);
  EXPECT_EQ(result_, kHttpBadRequest);
  EXPECT_THAT(response, StartsWith("HTTP/1.1 302"));
  EXPECT_THAT(response, HasSubstr("HTTP/1.1 400"));
}

TEST_F(HttpsRequestTest, KeepsNothingOfAFailedTransfer) {
  Fault fault;
  fault.kind = Fault::Kind::kRaw;
  fault.body = "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf";
  EXPECT_EQ(Post(fault), "");
  EXPECT_EQ(result_, kHttpTransportError);
  EXPECT_THAT(log_.Take(), ElementsAre(Line(4, "SendRequest", "curl error code = 18"),
                                       StartsWith(Line(4, "SendRequest", "error buffer = "))));
}

TEST_F(HttpsRequestTest, LeavesBareLineFeedsAsTheyAre) {
  Fault fault;
  fault.kind = Fault::Kind::kRaw;
  fault.body = "HTTP/1.1 200 OK\n\n{}";
  EXPECT_EQ(Post(fault), fault.body);
  EXPECT_EQ(result_, kHttpOk);
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
