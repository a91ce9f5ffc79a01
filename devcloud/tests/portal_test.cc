#include "devcloud/services/portal.h"

#include <gmock/gmock.h>

namespace devcloud {
namespace {

TEST(Portal, EscapesTheNamesOfTheTraversalServers) {
  const Clock clock;
  const Accounts accounts(clock, {});
  Devices devices;
  Portal portal(accounts, devices, {.stun_server = "a&b<c"});
  RecordedRequest request;
  request.header_lines = {"x-dpx-userId: qornsystem", "Authorization: OAuth oauth_token="};
  request.body = "<dpxDevice><userId>qornsystem</userId></dpxDevice>";
  EXPECT_THAT(portal.GetNtsServerInfo(request).body,
              testing::HasSubstr("<STUNServer>a&amp;b&lt;c</STUNServer>"));
}

}  // namespace
}  // namespace devcloud
