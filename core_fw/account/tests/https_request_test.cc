#include "core_fw/account/src/https_request.h"

#include <curl/curl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

using devcloud::Fault;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class HttpsRequestTest : public testing::Test {
 protected:
  HttpsRequestTest() { StartTransport(); }
  ~HttpsRequestTest() override { StopTransport(); }

  std::string Post(const std::string& url) {
    result_ = kHttpOtherStatus;
    return SendRequest({"Accept: application/json"}, url, 1, "body=1", &result_);
  }

  // The two lines of a failed transfer.
  void ExpectTransportError(int code) {
    EXPECT_EQ(result_, kHttpTransportError);
    EXPECT_THAT(log_.Take(),
                ElementsAre(Line(4, "SendRequest", "curl error code = " + std::to_string(code)),
                            StartsWith(Line(4, "SendRequest", "error buffer = "))));
  }

  LogCapture log_;
  const std::unique_ptr<devcloud::Cloud> cloud_ = StartCloud();
  HttpResult result_ = kHttpOtherStatus;
};

TEST_F(HttpsRequestTest, ClassifiesTheStatusAndReturnsTheWholeAnswer) {
  const struct {
    int status;
    HttpResult result;
  } cases[] = {{200, kHttpOk},         {201, kHttpOtherStatus}, {204, kHttpNoContent},
               {400, kHttpBadRequest}, {401, kHttpOtherStatus}, {403, kHttpForbidden},
               {404, kHttpNotFound},   {500, kHttpOtherStatus}, {503, kHttpOtherStatus}};
  for (const auto& c : cases) {
    Fault fault;
    fault.status = c.status;
    fault.body = c.status == 204 ? "" : "the body";
    fault.header_lines = {"X-Mark: here"};
    cloud_->AddFault(fault);
    const std::string response = Post(cloud_->http_url() + "/token");
    EXPECT_EQ(result_, c.result) << c.status;
    EXPECT_THAT(response, StartsWith("HTTP/1.1 " + std::to_string(c.status)));
    EXPECT_THAT(response, HasSubstr("\r\nX-Mark: here\r\n"));
    EXPECT_THAT(response, HasSubstr("\r\n\r\n" + fault.body));
  }
  EXPECT_THAT(log_.Take(), IsEmpty());
}

TEST_F(HttpsRequestTest, ChecksNoCertificateWhereTheUrlHoldsHttps) {
  Post(cloud_->https_url() + "/token");
  EXPECT_EQ(result_, kHttpBadRequest);
  EXPECT_TRUE(cloud_->requests().at(0).tls);
  // Through a redirect from a plain URL the certificate is checked, unless "https" stands anywhere.
  for (const bool marked : {false, true}) {
    Fault fault;
    fault.kind = Fault::Kind::kRedirect;
    fault.status = 307;
    fault.location = cloud_->https_url() + "/token";
    cloud_->AddFault(fault);
    Post(cloud_->http_url() + "/token" + (marked ? "?https" : ""));
    if (marked) {
      EXPECT_EQ(result_, kHttpBadRequest);
    } else {
      ExpectTransportError(CURLE_PEER_FAILED_VERIFICATION);
    }
  }
}

TEST_F(HttpsRequestTest, FollowsRedirectsAndKeepsEveryHeaderBlock) {
  const struct {
    int status;
    const char* body;  // What still goes to the last server.
  } cases[] = {{302, ""}, {307, "body=1"}};
  for (const auto& c : cases) {
    cloud_->ClearRequests();
    Fault fault;
    fault.kind = Fault::Kind::kRedirect;
    fault.status = c.status;
    fault.times = 3;
    cloud_->AddFault(fault);
    const std::string response = Post(cloud_->http_url() + "/token");
    EXPECT_EQ(result_, kHttpBadRequest);
    const std::string status = "HTTP/1.1 " + std::to_string(c.status);
    EXPECT_THAT(response, StartsWith(status));
    EXPECT_THAT(response, HasSubstr("HTTP/1.1 400"));
    ASSERT_EQ(cloud_->requests().size(), 4u);
    EXPECT_EQ(cloud_->requests()[3].method, "POST");
    EXPECT_EQ(cloud_->requests()[3].body, c.body);
  }
}

TEST_F(HttpsRequestTest, FailedTransfersAreTransportErrors) {
  const std::string url = cloud_->http_url() + "/token";
  Fault fault;
  fault.kind = Fault::Kind::kResetAfter;
  fault.bytes = 20;
  cloud_->AddFault(fault);
  EXPECT_EQ(Post(url), "");
  ExpectTransportError(CURLE_RECV_ERROR);

  fault.kind = Fault::Kind::kRaw;
  fault.body = "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf";
  cloud_->AddFault(fault);
  EXPECT_EQ(Post(url), "");
  ExpectTransportError(CURLE_PARTIAL_FILE);

  EXPECT_EQ(Post(""), "");
  ExpectTransportError(CURLE_URL_MALFORMAT);

  cloud_->RefuseConnections(true);
  EXPECT_EQ(Post(url), "");
  ExpectTransportError(CURLE_COULDNT_CONNECT);
}

TEST_F(HttpsRequestTest, BareLineFeedsReachTheCaller) {
  Fault fault;
  fault.kind = Fault::Kind::kRaw;
  fault.body = "HTTP/1.1 200 OK\n\n{}";
  cloud_->AddFault(fault);
  EXPECT_EQ(Post(cloud_->http_url() + "/token"), "HTTP/1.1 200 OK\n\n{}");
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
