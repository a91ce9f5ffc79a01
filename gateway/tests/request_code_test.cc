#include "gateway/request_code.h"

#include <gtest/gtest.h>

#include <memory>

#include "devcloud/cloud.h"

namespace gateway {
namespace {

class RequestCodeTest : public testing::Test {
 protected:
  RequestCodeTest() : cloud_(devcloud::Cloud::Start(devcloud::Options(), &error_)) {}

  // The code, or "error: " and the line.
  std::string Request(const std::string& url, const std::string& user) {
    std::string code;
    const bool good = RequestCode(
        url, user, [this] { return stopped_; }, &code, &error_);
    return good ? code : "error: " + error_;
  }

  std::string error_;
  bool stopped_ = false;
  const std::unique_ptr<devcloud::Cloud> cloud_;
};

TEST_F(RequestCodeTest, PostsTheUserEncodedOverHttpAndUncheckedHttps) {
  for (const std::string& url : {cloud_->http_url(), cloud_->https_url()}) {
    cloud_->ClearRequests();
    const std::string code = Request(url, "a&b c@example.com");
    EXPECT_GE(code.size(), 8U);
    EXPECT_NE(code.substr(0, 6), "error:") << code;
    ASSERT_EQ(cloud_->requests().size(), 1U);
    EXPECT_EQ(cloud_->requests()[0].target, "/authorize");
    EXPECT_EQ(cloud_->requests()[0].body, "user=a%26b%20c%40example.com");
  }
}

TEST_F(RequestCodeTest, SaysWhyThereIsNoCode) {
  const std::string url = cloud_->http_url();
  const struct {
    int status;
    std::string body;
    const char* error;
  } cases[] = {
      {500, "", "status 500"},
      {302, "{\"code\":\"abc\"}", "status 302"},
      {200, "", "the answer holds no code"},
      {200, "{\"code\":", "the answer holds no code"},
      {200, "[\"code\"]", "the answer holds no code"},
      {200, "{\"code\":1}", "the answer holds no code"},
      {200, "{\"code\":\"\"}", "the answer holds no code"},
      {200, std::string(70000, ' '), "the answer is too long"},
  };
  for (const auto& c : cases) {
    devcloud::Fault fault;
    fault.status = c.status;
    fault.body = c.body;
    cloud_->AddFault(fault);
    EXPECT_EQ(Request(url, "alice"), "error: " + url + "/authorize: " + c.error) << c.body;
  }
  EXPECT_EQ(Request("file:///etc/hostname#", "a"),
            "error: file:///etc/hostname#/authorize: Unsupported protocol");
  devcloud::Fault stall;
  stall.kind = devcloud::Fault::Kind::kStall;
  cloud_->AddFault(stall);
  stopped_ = true;
  EXPECT_EQ(Request(url, "alice"), "error: " + url + "/authorize: told to stop");
  stopped_ = false;
  cloud_->RefuseConnections(true);
  EXPECT_EQ(Request(url, "alice"), "error: " + url + "/authorize: Couldn't connect to server");
}

}  // namespace
}  // namespace gateway
