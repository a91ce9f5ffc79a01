#include "devcloud/control.h"

#include <gtest/gtest.h>

#include <tuple>

#include "devcloud/tests/client.h"

namespace devcloud {
namespace {

TEST(ControlTest, RefusesWhatIsNoFaultOrStep) {
  const auto cloud = StartCloud();
  const std::pair<const char*, const char*> kCases[] = {
      {"/api/faults", ""},
      {"/api/faults", "[]"},
      {"/api/faults", "{}"},
      {"/api/faults", "{\"kind\":\"nothing\"}"},
      {"/api/faults", "{\"kind\":\"stall\",\"tmes\":1}"},
      {"/api/faults", "{\"kind\":\"stall\",\"times\":0}"},
      {"/api/faults", "{\"kind\":\"status\",\"status\":99}"},
      {"/api/faults", "{\"kind\":\"status\",\"status\":\"500\"}"},
      {"/api/faults", "{\"kind\":\"status\",\"header_lines\":[1]}"},
      {"/api/faults", "{\"kind\":\"raw\",\"body\":1}"},
      {"/api/faults", "{\"kind\":\"reset_after\",\"bytes\":-1}"},
      {"/api/clock", "{\"advance_seconds\":-1}"},
      {"/api/clock", "7"},
  };
  for (const auto& [path, body] : kCases) {
    EXPECT_EQ(Send("POST", cloud->api_url() + path, body).status, 400) << body;
  }
  EXPECT_EQ(Send("POST", cloud->http_url() + "/token", "x=y").status, 400) << "a fault was added";
}

TEST(ControlTest, ShowsRequestsButNotItsOwn) {
  const auto cloud = StartCloud();
  Send("POST", cloud->http_url() + "/token", "\xFF<&");
  Send("GET", cloud->http_url() + "/");
  const std::string shown = Send("GET", cloud->http_url() + "/api/requests").text;
  EXPECT_NE(shown.find("\"target\": \"/token\""), shown.npos);
  EXPECT_NE(shown.find("\"raw_base64\": \"UE9TVCAvdG9rZW4gSFRUUC8xLjENCkhvc3Q6"), shown.npos);
  EXPECT_EQ(shown.find("/api/"), shown.npos);
  ASSERT_EQ(cloud->requests().size(), 1u);
  EXPECT_EQ(Send("DELETE", cloud->http_url() + "/api/requests").status, 200);
  EXPECT_TRUE(cloud->requests().empty());
}

TEST(ControlTest, StreamsTellWhatChangesWithoutSecrets) {
  const auto cloud = StartCloud();
  Connection page(cloud->api_url());
  Connection slow_page(cloud->api_url());
  {
    Connection closed_page(cloud->api_url());
    for (Connection* each : {&page, &slow_page, &closed_page}) {
      each->Write("GET /api/events HTTP/1.1\r\n\r\n");
    }
    closed_page.ReadUntil("\"requests\":[]}\n\n");
  }
  const std::string begin = page.ReadUntil("\"requests\":[]}\n\n");
  EXPECT_NE(begin.find("Content-Type: text/event-stream\r\n"), begin.npos);
  EXPECT_NE(begin.find("event: state\ndata: {"), begin.npos);
  const std::string code = cloud->IssueCode("<ann>");
  const std::string state = page.ReadUntil("\n\n");
  EXPECT_NE(state.find("\"short\":\"" + code.substr(0, 4) + "…\""), state.npos) << state;
  EXPECT_EQ(state.find(code), state.npos);
  for (int i = 0; i < 200; ++i) Send("POST", cloud->http_url() + "/token", "x=y");
  page.ReadUntil("\"number\":200,");
  Send("DELETE", cloud->api_url() + "/api/requests");
  page.ReadUntil("{\"oldest\":201,\"requests\":[]}\n\n");
}

TEST(ControlTest, SingleFaultsAreSwitchedOff) {
  const auto cloud = StartCloud();
  const std::string faults = cloud->api_url() + "/api/faults";
  Send("POST", faults, "{\"kind\":\"status\",\"status\":503,\"times\":-1}");
  const Exchange added = Send("POST", faults, "{\"kind\":\"stall\",\"path\":\"/authorize\"}");
  EXPECT_NE(added.text.find("\"number\": 2"), added.text.npos) << added.text;
  EXPECT_EQ(Send("POST", cloud->http_url() + "/token", "x=y").status, 503);
  EXPECT_EQ(Send("DELETE", faults + "?number=1").status, 200);
  EXPECT_EQ(Send("DELETE", faults + "?number=1").status, 404);
  EXPECT_EQ(Send("POST", cloud->http_url() + "/token", "x=y").status, 400);
  Connection stalled(cloud->http_url());
  stalled.Write("GET /authorize HTTP/1.1\r\n\r\n");
  ASSERT_TRUE(cloud->WaitForRequests(3));
  EXPECT_FALSE(cloud->requests()[2].answer);
  EXPECT_EQ(Send("DELETE", faults).status, 200);
  const std::string answer = stalled.ReadUntil("</html>");
  EXPECT_EQ(answer, cloud->requests()[2].answer);
}

TEST(ControlTest, PagesOfOthersChangeNothing) {
  const auto cloud = StartCloud();
  const std::string host = cloud->api_url().substr(sizeof("http://") - 1);
  const std::tuple<std::string, std::string, int> kCases[] = {
      {host, cloud->api_url(), 200},
      {"localhost:1", "http://localhost:1", 200},
      {"devbox", "http://DevBox", 200},
      {"[::1]:80", "http://[::1]:80", 200},
      {host, "http://evil.example", 403},
      {host, "https://" + host, 403},
      {host, "null", 403},
      {"evil.example:80", "http://evil.example:80", 403},
      {"127.0.0.1.evil.example", "http://127.0.0.1.evil.example", 403},
  };
  for (const auto& [named, origin, status] : kCases) {
    const Exchange seen = Send("POST", cloud->api_url() + "/api/codes", "{\"user\":\"ann\"}",
                               {"Host: " + named, "Origin: " + origin});
    EXPECT_EQ(seen.status, status) << named << " " << origin;
    EXPECT_EQ(seen.text.find("\"code\"") != seen.text.npos, status == 200) << seen.text;
  }
  EXPECT_EQ(Send("POST", cloud->http_url() + "/authorize", "user=a", {"Origin: null"}).status, 400);
}

TEST(ControlTest, ShowsOneExchangeByteForByte) {
  const auto cloud = StartCloud();
  const std::string exchange = cloud->api_url() + "/api/exchange?number=";
  const Exchange seen = Send("POST", cloud->http_url() + "/token", "\xFF<&");
  const auto ends_with = [](const Exchange& answer, const std::string& text) {
    return answer.text.ends_with("\r\n\r\n" + text);
  };
  EXPECT_TRUE(ends_with(Send("GET", exchange + "1&part=request"), cloud->requests()[0].raw));
  EXPECT_TRUE(ends_with(Send("GET", exchange + "1&part=answer"), seen.text));
  for (const char* unknown : {"0", "2", "-1", "x", ""}) {
    EXPECT_EQ(Send("GET", exchange + unknown + "&part=answer").status, 404) << unknown;
  }
  EXPECT_EQ(Send("GET", exchange + "1").status, 400);
}

TEST(ControlTest, ClockMakesCodesOld) {
  const auto cloud = StartCloud();
  const std::string form =
      "grant_type=authorization_code&client_id=a&client_secret=b&code=" + cloud->IssueCode("ann");
  EXPECT_EQ(Send("POST", cloud->api_url() + "/api/clock", "{\"advance_seconds\":601}").status, 200);
  EXPECT_EQ(Send("POST", cloud->http_url() + "/token", form).status, 400);
}

}  // namespace
}  // namespace devcloud
