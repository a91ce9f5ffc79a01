#include "devcloud/control.h"

#include <gtest/gtest.h>

#include "devcloud/tests/client.h"

namespace devcloud {
namespace {

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

TEST(ControlTest, AStalledRequestIsAnsweredOnceTheFaultIsOff) {
  const auto cloud = StartCloud();
  const std::string faults = cloud->api_url() + "/api/faults";
  Send("POST", faults, "{\"kind\":\"stall\"}");
  Connection stalled(cloud->http_url());
  stalled.Write("GET /authorize HTTP/1.1\r\n\r\n");
  ASSERT_TRUE(cloud->WaitForRequests(1));
  EXPECT_FALSE(cloud->requests()[0].answer);
  EXPECT_EQ(Send("DELETE", faults).status, 200);
  const std::string answer = stalled.ReadUntil("</html>");
  EXPECT_EQ(answer, cloud->requests()[0].answer);
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
}

}  // namespace
}  // namespace devcloud
