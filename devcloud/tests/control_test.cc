#include "devcloud/control.h"

#include <gtest/gtest.h>

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

TEST(ControlTest, PageAndStateShowUsersWithoutSecrets) {
  Options options;
  options.gateways = {"A<B"};
  const auto cloud = StartCloud(options);
  const std::string code = cloud->IssueCode("<ann>");
  const std::string guid = cloud->UserGuid("<ann>");
  const std::string page = Send("GET", cloud->api_url() + "/").text;
  const std::string state = Send("GET", cloud->api_url() + "/api/state").text;
  EXPECT_NE(page.find("<td>&lt;ann&gt;<td>" + guid), page.npos);
  EXPECT_NE(page.find("<td>A&lt;B<td>PEER-A&lt;B-"), page.npos);
  EXPECT_NE(state.find("\"guid\": \"" + guid + "\""), state.npos);
  EXPECT_EQ((page + state).find(code), page.npos);
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
