#include "devcloud/cloud.h"

#include <curl/curl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

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

TEST(CloudTest, UnknownPathsAndMethodsAreRefused) {
  const auto cloud = StartCloud();
  EXPECT_EQ(Send("GET", cloud->http_url() + "/device").status, 404);
  const Exchange seen = Send("PUT", cloud->http_url() + "/authorize");
  EXPECT_EQ(seen.status, 405);
  EXPECT_NE(seen.text.find("\r\nAllow: GET, POST\r\n"), seen.text.npos);
}

TEST(CloudTest, RefusesConnectionsAndOpensTheSamePortsAgain) {
  const auto cloud = StartCloud();
  Connection idle(cloud->http_url());
  for (int round = 0; round < 2; ++round) {
    cloud->RefuseConnections(true);
    EXPECT_EQ(idle.ReadUntil(""), "");
    EXPECT_EQ(Send("GET", cloud->http_url() + "/authorize").error, CURLE_COULDNT_CONNECT);
    EXPECT_EQ(Send("GET", cloud->https_url() + "/authorize").error, CURLE_COULDNT_CONNECT);
    EXPECT_EQ(Send("GET", cloud->api_url() + "/api/state").status, 200);
    cloud->RefuseConnections(false);
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
  cloud = nullptr;
  EXPECT_EQ(stalled.ReadUntil("") + idle.ReadUntil("") + no_handshake.ReadUntil(""), "");
}

class StateFileTest : public testing::Test {
 protected:
  StateFileTest() {
    const bool has_shm = std::filesystem::is_directory("/dev/shm");
    std::string folder = (has_shm ? "/dev/shm" : testing::TempDir()) + "/devcloud.XXXXXX";
    options_.state_file = std::string(mkdtemp(folder.data())) + "/state";
  }
  ~StateFileTest() override {
    std::filesystem::remove_all(std::filesystem::path(options_.state_file).parent_path());
  }

  Options options_;
};

TEST_F(StateFileTest, AccountsAndGatewaysSurviveARestart) {
  std::string code, guid;
  {
    const auto cloud = StartCloud(options_);
    code = cloud->IssueCode("ann");
    guid = cloud->UserGuid("ann");
    cloud->AddGateway("AABB");
  }
  struct stat status;
  ASSERT_EQ(stat(options_.state_file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  const auto cloud = StartCloud(options_);
  EXPECT_EQ(cloud->UserGuid("ann"), guid);
  EXPECT_NE(Send("GET", cloud->api_url() + "/api/state").text.find(cloud->PeerId("AABB")),
            std::string::npos);
  const std::string form = "grant_type=authorization_code&client_id=a&client_secret=b&code=" + code;
  EXPECT_EQ(Send("POST", cloud->http_url() + "/token", form).status, 200);
}

TEST_F(StateFileTest, StartSaysInOneLineWhatIsWrong) {
  std::ofstream(options_.state_file) << "{}";
  const auto running = StartCloud();
  Options taken, unknown, foreign;
  taken.http_port = static_cast<std::uint16_t>(
      std::stoi(running->http_url().substr(running->http_url().rfind(':') + 1)));
  unknown.address = "nowhere";
  foreign.address = "192.0.2.1";
  const std::pair<Options, const char*> kCases[] = {
      {taken, "Address already in use"},
      {unknown, "nowhere: not an IP address"},
      {foreign, "Cannot assign requested address"},
      {options_, "/state: "},
  };
  for (const auto& [options, expected] : kCases) {
    std::string error;
    EXPECT_EQ(Cloud::Start(options, &error), nullptr) << expected;
    EXPECT_NE(error.find(expected), error.npos) << error;
    EXPECT_EQ(error.find('\n'), error.npos) << error;
  }
}

}  // namespace
}  // namespace devcloud
