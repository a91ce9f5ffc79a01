#include "devcloud/cloud.h"

#include <curl/curl.h>
#include <gtest/gtest.h>

#include "devcloud/tests/client.h"

namespace devcloud {
namespace {

TEST(CloudTest, KeepsRequestsByteForByte) {
  const auto cloud = StartCloud();
  const std::string first =
      "POST /authorize?q HTTP/1.1\r\nhOST:x\r\nX-Odd:   zep2 \r\nX-Odd: \xC3\xA4\r\n"
      "Transfer-Encoding: chunked\r\n\r\n3\r\nuse\r\n7;e=1\r\nr=ann&b\r\n0\r\n\r\n";
  const std::string second = "GET /nowhere HTTP/1.1\r\n\r\n";
  const std::string last = "GET /authorize HTTP/1.1\r\nConnection: close\r\n\r\n";
  Connection connection(cloud->http_url());
  connection.Write(first + second + last);
  const std::string answers = connection.ReadUntil("");
  EXPECT_LT(answers.find("200 OK"), answers.find("404 Not Found"));
  EXPECT_NE(answers.find("\r\nConnection: close\r\n"), answers.npos);
  const auto requests = cloud->requests();
  ASSERT_EQ(requests.size(), 3u);
  EXPECT_EQ(requests[0].raw, first);
  EXPECT_EQ(requests[0].method, "POST");
  EXPECT_EQ(requests[0].target, "/authorize?q");
  EXPECT_EQ(requests[0].body, "user=ann&b");
  EXPECT_EQ(requests[0].header_lines,
            (std::vector<std::string>{"hOST:x", "X-Odd:   zep2 ", "X-Odd: \xC3\xA4",
                                      "Transfer-Encoding: chunked"}));
  EXPECT_EQ(requests[1].raw, second);
  EXPECT_EQ(requests[2].raw, last);
}

TEST(CloudTest, AnswersWhatIsNoRequestAndKeepsIt) {
  const auto cloud = StartCloud();
  const std::pair<std::string, const char*> kCases[] = {
      {"nonsense\r\n\r\nmore", "400"},
      {"GET / HTTP/1.1\nHost: x\n\n", "400"},
      {"POST /token HTTP/1.1\r\nContent-Length: 70000000\r\n\r\n", "413"},
      {"GET / HTTP/1.1\r\nX: " + std::string(3u << 20, 'x') + "\r\n\r\n", "431"},
  };
  for (const auto& [bytes, status] : kCases) {
    cloud->ClearRequests();
    Connection connection(cloud->http_url());
    connection.Write(bytes);
    const std::string answer = connection.ReadUntil("cannot be read.\n");
    EXPECT_TRUE(answer.starts_with("HTTP/1.1 " + std::string(status))) << bytes.substr(0, 60);
    ASSERT_EQ(cloud->requests().size(), 1u);
    EXPECT_EQ(cloud->requests()[0].method, "");
    EXPECT_TRUE(bytes.starts_with(cloud->requests()[0].raw)) << bytes.substr(0, 60);
  }
}

TEST(CloudTest, TellsClientsWithLargeBodiesToGoOn) {
  const auto cloud = StartCloud();
  const std::string body(1'500'000, 'x');
  const Exchange seen = Send("POST", cloud->https_url() + "/token", body);
  EXPECT_TRUE(seen.text.starts_with("HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 400 ")) << seen.text;
  ASSERT_EQ(cloud->requests().size(), 1u);
  EXPECT_EQ(cloud->requests()[0].body, body);
  EXPECT_TRUE(cloud->requests()[0].tls);
}

TEST(CloudTest, RefusesConnectionsAndOpensTheSamePortsAgain) {
  const auto cloud = StartCloud();
  Connection idle(cloud->http_url());
  const std::string faults = cloud->api_url() + "/api/faults";
  for (const bool by_api : {false, true}) {
    if (by_api) {
      EXPECT_EQ(Send("POST", faults, "{\"kind\":\"refuse\"}").status, 200);
    } else {
      cloud->RefuseConnections(true);
    }
    EXPECT_EQ(idle.ReadUntil(""), "");
    EXPECT_EQ(Send("GET", cloud->http_url() + "/authorize").error, CURLE_COULDNT_CONNECT);
    EXPECT_EQ(Send("GET", cloud->https_url() + "/authorize").error, CURLE_COULDNT_CONNECT);
    EXPECT_EQ(Send("GET", cloud->api_url() + "/api/state").status, 200);
    by_api ? (void)Send("DELETE", faults) : cloud->RefuseConnections(false);
    EXPECT_EQ(Send("GET", cloud->http_url() + "/authorize").status, 200);
    EXPECT_EQ(Send("GET", cloud->https_url() + "/authorize").status, 200);
  }
}

TEST(CloudTest, StopsWithConnectionsOpen) {
  auto cloud = StartCloud();
  Fault stall;
  stall.kind = Fault::Kind::kStall;
  cloud->AddFault(stall);
  Connection idle(cloud->http_url());
  Connection no_handshake(cloud->https_url());
  Connection stalled(cloud->http_url());
  stalled.Write("GET /authorize HTTP/1.1\r\n\r\n");
  ASSERT_TRUE(cloud->WaitForRequests(1));
  Connection page(cloud->api_url());
  page.Write("GET /api/events HTTP/1.1\r\n\r\n");
  page.ReadUntil("event: requests");
  cloud = nullptr;
  page.ReadUntil("");
  EXPECT_EQ(stalled.ReadUntil("") + idle.ReadUntil("") + no_handshake.ReadUntil(""), "");
}

// Some are accepted in the very moment in which the ports close.
TEST(CloudTest, StopsWhileConnectionsCome) {
  for (int i = 0; i < 20; ++i) {
    const auto cloud = StartCloud();
    std::vector<std::unique_ptr<Connection>> connections;
    for (int n = 0; n < 30; ++n) {
      connections.push_back(std::make_unique<Connection>(cloud->http_url()));
    }
  }
}

}  // namespace
}  // namespace devcloud
