#include <curl/curl.h>
#include <gtest/gtest.h>

#include "devcloud/tests/client.h"

namespace devcloud {
namespace {

const char* const kNormalHead = "HTTP/1.1 400 Bad Request\r\n";

// Each case is one fault and what a client then sees; without a fault, the form "x=y" gets 400.
TEST(FaultTest, EachKindIsSeenByAClient) {
  const struct {
    const char* fault;  // as the API takes it
    int error;
    long status;
    std::string begin, end;
    std::size_t requests = 1;
  } kCases[] = {
      {R"("status")", 0, 500, "HTTP/1.1 500 Internal Server Error\r\n", "ordered.\n"},
      {R"("status","status":204)", 0, 204, "HTTP/1.1 204 No Content\r\n\r\n", ""},
      {R"("body","body":"{}","content_type":"application/json","header_lines":["X-Extra:  1"])", 0,
       200, "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 2\r\n",
       "X-Extra:  1\r\n\r\n{}"},
      {R"("body","body":"{","bytes":4)", 0, 200, "HTTP/1.1 200 OK\r\nContent-Length: 4\r\n",
       "\r\n\r\n{xxx"},
      {R"("raw","body":"HTTP/1.1 299\nA: b\n\nc")", 0, 299, "HTTP/1.1 299\nA: b\n\nc", ""},
      {R"("reset_after","bytes":0)", CURLE_RECV_ERROR, 0, "", ""},
      {R"("reset_after","bytes":26)", CURLE_RECV_ERROR, 400, kNormalHead, "Request\r\n"},
      {R"("truncate_after","bytes":0)", CURLE_GOT_NOTHING, 0, "", ""},
      {R"("truncate_after","bytes":187)", CURLE_PARTIAL_FILE, 400, kNormalHead, ""},
      {R"("drip")", 0, 400, kNormalHead, "}"},
      {R"("redirect","status":307,"times":3)", 0, 400, "HTTP/1.1 307 Temporary Redirect\r\n", "}",
       4},
      {R"("redirect","location":"/authorize")", 0, 400, "HTTP/1.1 302 Found\r\n", "}", 2},
  };
  const auto cloud = StartCloud();
  for (const std::string& url : {cloud->http_url(), cloud->https_url()}) {
    for (const auto& test : kCases) {
      const std::string name = url + " case " + std::to_string(&test - kCases);
      cloud->ClearRequests();
      const std::string fault = std::string("{\"kind\":") + test.fault + "}";
      EXPECT_EQ(Send("POST", cloud->api_url() + "/api/faults", fault).status, 200) << fault;
      const Exchange seen = Send("POST", url + "/token", "x=y");
      EXPECT_EQ(seen.error, test.error) << name;
      EXPECT_EQ(seen.status, test.status) << name;
      EXPECT_TRUE(seen.text.starts_with(test.begin)) << name << "\n" << seen.text;
      EXPECT_TRUE(seen.text.ends_with(test.end)) << name << "\n" << seen.text;
      ASSERT_EQ(cloud->requests().size(), test.requests) << name;
      EXPECT_TRUE(seen.text.ends_with(*cloud->requests().back().answer)) << name;
      EXPECT_EQ(Send("POST", url + "/token", "x=y").status, 400) << name << ": fault met twice";
    }
  }
}

// Each write is a TLS record of its own, which the client reads one at a time.
TEST(FaultTest, DripSendsSingleBytes) {
  const auto cloud = StartCloud();
  EXPECT_GT(Send("POST", cloud->https_url() + "/token", "x=y").largest_piece, 1u);
  Fault drip;
  drip.kind = Fault::Kind::kDrip;
  cloud->AddFault(drip);
  EXPECT_EQ(Send("POST", cloud->https_url() + "/token", "x=y").largest_piece, 1u);
}

TEST(FaultTest, PathAndTimesSayWhoMeetsIt) {
  const auto cloud = StartCloud();
  for (const char* fault : {R"({"kind":"status","status":503,"path":"/token","times":-1})",
                            R"({"kind":"status","status":502,"times":2})"}) {
    EXPECT_EQ(Send("POST", cloud->api_url() + "/api/faults", fault).status, 200);
  }
  const std::pair<const char*, long> kSteps[] = {
      {"/token", 503},         {"/authorize", 502}, {"/token?q", 503}, {"/token/x", 502},
      {"/authorize?q=1", 400}, {"/api/state", 405}, {"/token", 503},
  };
  for (const auto& [target, status] : kSteps) {
    EXPECT_EQ(Send("POST", cloud->http_url() + target, "x=y").status, status) << target;
  }
  EXPECT_EQ(Send("DELETE", cloud->api_url() + "/api/faults").status, 200);
  EXPECT_EQ(Send("POST", cloud->http_url() + "/token", "x=y").status, 400);
}

TEST(FaultTest, StalledRequestsGoOnWhenFaultsAreCleared) {
  const auto cloud = StartCloud();
  Fault stall;
  stall.kind = Fault::Kind::kStall;
  cloud->AddFault(stall);
  Connection connection(cloud->http_url());
  connection.Write("POST /authorize HTTP/1.1\r\nContent-Length: 8\r\n\r\nuser=ann");
  ASSERT_TRUE(cloud->WaitForRequests(1));
  EXPECT_EQ(Send("GET", cloud->http_url() + "/authorize").status, 200) << "others are served";
  EXPECT_EQ(cloud->UserGuid("ann"), "") << "the stalled request was handled";
  cloud->ClearFaults();
  EXPECT_TRUE(connection.ReadUntil("}").starts_with("HTTP/1.1 200 OK\r\n"));
  EXPECT_NE(cloud->UserGuid("ann"), "");
}

}  // namespace
}  // namespace devcloud
