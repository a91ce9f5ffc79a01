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

class HttpsRequestTest : public AccountTest {
 protected:
  HttpsRequestTest() { StartTransport(); }
  ~HttpsRequestTest() override { StopTransport(); }

  std::string Post(const std::string& url) {
    result_ = kHttpOtherStatus;
    return SendRequest({"Accept: application/json"}, url, 1, "body=1", &result_);
  }
  std::string PostToServer(const std::string& query = "") {
    return Post(cloud_->http_url() + "/token" + query);
  }
  // Where the cloud answers so, once.
  std::string PostAndMeet(const Fault& fault) {
    cloud_->AddFault(fault);
    return PostToServer();
  }

  // The two lines of a failed transfer.
  void ExpectTransportError(int code) {
    EXPECT_EQ(result_, kHttpTransportError);
    EXPECT_THAT(log_.Take(),
                ElementsAre(Line(4, "SendRequest", "curl error code = " + std::to_string(code)),
                            StartsWith(Line(4, "SendRequest", "error buffer = "))));
  }

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
    const std::string body = c.status == 204 ? "" : "the body";
    const std::string response =
        PostAndMeet({.status = c.status, .body = body, .header_lines = {"X-Mark: here"}});
    EXPECT_EQ(result_, c.result) << c.status;
    EXPECT_THAT(response, StartsWith("HTTP/1.1 " + std::to_string(c.status)));
    EXPECT_THAT(response, HasSubstr("\r\nX-Mark: here\r\n"));
    EXPECT_THAT(response, HasSubstr("\r\n\r\n" + body));
  }
  EXPECT_THAT(log_.Take(), IsEmpty());
}

TEST_F(HttpsRequestTest, ChecksNoCertificateWhereTheUrlHoldsHttps) {
  Post(cloud_->https_url() + "/token");
  EXPECT_EQ(result_, kHttpBadRequest);
  EXPECT_TRUE(cloud_->requests().at(0).tls);
  // Through a redirect from a plain URL the certificate is checked, unless "https" stands anywhere.
  for (const bool marked : {false, true}) {
    const std::string location = cloud_->https_url() + "/token";
    cloud_->AddFault({.kind = Fault::Kind::kRedirect, .status = 307, .location = location});
    PostToServer(marked ? "?https" : "");
    if (marked) {
      EXPECT_EQ(result_, kHttpBadRequest);
    } else {
      ExpectTransportError(CURLE_PEER_FAILED_VERIFICATION);
    }
  }
}

TEST_F(HttpsRequestTest, FollowsRedirectsAndKeepsEveryHeaderBlock) {
  for (const int status : {302, 307}) {
    cloud_->ClearRequests();
    const std::string response =
        PostAndMeet({.times = 3, .kind = Fault::Kind::kRedirect, .status = status});
    EXPECT_EQ(result_, kHttpBadRequest);
    EXPECT_THAT(response, StartsWith("HTTP/1.1 " + std::to_string(status)));
    EXPECT_THAT(response, HasSubstr("HTTP/1.1 400"));
    ASSERT_EQ(cloud_->requests().size(), 4u);
    EXPECT_EQ(cloud_->requests()[3].method, "POST");
    EXPECT_EQ(cloud_->requests()[3].body, status == 307 ? "body=1" : "");
  }
}

TEST_F(HttpsRequestTest, FailedTransfersAreTransportErrors) {
  EXPECT_EQ(PostAndMeet({.kind = Fault::Kind::kResetAfter, .bytes = 20}), "");
  ExpectTransportError(CURLE_RECV_ERROR);
  const std::string half = "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf";
  EXPECT_EQ(PostAndMeet({.kind = Fault::Kind::kRaw, .body = half}), "");
  ExpectTransportError(CURLE_PARTIAL_FILE);
  EXPECT_EQ(Post(""), "");
  ExpectTransportError(CURLE_URL_MALFORMAT);
  cloud_->RefuseConnections(true);
  EXPECT_EQ(PostToServer(), "");
  ExpectTransportError(CURLE_COULDNT_CONNECT);
}

TEST_F(HttpsRequestTest, BareLineFeedsReachTheCaller) {
  const std::string answer = "HTTP/1.1 200 OK\n\n{}";
  EXPECT_EQ(PostAndMeet({.kind = Fault::Kind::kRaw, .body = answer}), answer);
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
