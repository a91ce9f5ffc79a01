#include "devcloud/portal.h"

#include <gtest/gtest.h>

#include "devcloud/secrets.h"

namespace devcloud {
namespace {

const char* const kDeclaration = "<?xml version=\"1.0\" standalone=\"yes\"?>";

class PortalTest : public testing::Test {
 protected:
  struct Identity {
    std::string guid, token;
  };

  Identity SignIn(const std::string& user_id) {
    const auto grant = accounts_.RedeemCode(accounts_.IssueCode(user_id));
    return {grant->guid, grant->access_token};
  }

  static RecordedRequest Ask(const Identity& who, const std::string& children) {
    RecordedRequest request;
    request.header_lines = {"X-DPX-userid: " + who.guid,
                            "Authorization: OAuth oauth_consumer_key=k, oauth_token=" + who.token +
                                ", oauth_signature_method=_NONE_, oauth_version=1.0"};
    request.body = kDeclaration + ("<dpxDevice>" + children) + "</dpxDevice>";
    return request;
  }

  static std::string Registration(const std::string& guid, const std::string& address) {
    return "<userID>" + guid + "</userID><deviceID></deviceID><devicePhysicalAddressText>" +
           address + "</devicePhysicalAddressText><service>S</service>";
  }

  static std::string Result(const Answer& answer) {
    const std::string key = "<response><result>";
    const std::size_t begin = answer.body.find(key) + key.size();
    return answer.body.substr(begin, answer.body.find('<', begin) - begin);
  }

  std::string DevicesOf(const Identity& who) {
    return portal_.GetUserDevice(Ask(who, "<userId>" + who.guid + "</userId>")).body;
  }

  Clock clock_;
  Accounts accounts_{clock_, std::chrono::hours(1)};
  Devices devices_;
  Portal portal_{accounts_, devices_, {"p<&>", "s", "t", "1", "d"}};
  const Identity ann_ = SignIn("ann");
  const Identity bob_ = SignIn("bob");
  const Identity system_{"qornsystem", ""};
};

TEST_F(PortalTest, ListsTheGatewaysThatTheUserIsRegisteredOn) {
  devices_.Add("0000");
  for (const char* address : {"AABB", "CCDD", "AABB"}) {
    EXPECT_EQ(Result(portal_.AddUserDevice(Ask(ann_, Registration(ann_.guid, address)))),
              "success");
  }
  const std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><deviceInfoList>";
  const auto info = [](const std::string& address) {
    return "<deviceInfo><peerId>" + PeerIdOf(address) + "</peerId><devicePhysicalAddressText>" +
           address + "</devicePhysicalAddressText></deviceInfo>";
  };
  EXPECT_EQ(DevicesOf(ann_), xml + info("AABB") + info("CCDD") + "</deviceInfoList>");
  EXPECT_EQ(DevicesOf(bob_), xml + "</deviceInfoList>");
  EXPECT_EQ(DevicesOf(system_),
            xml + info("0000") + info("AABB") + info("CCDD") + "</deviceInfoList>");
}

TEST_F(PortalTest, AnySignedInUserEndsARegistrationOnce) {
  devices_.Register(ann_.guid, "AABB");
  const auto remove = [&](const Identity& who, const std::string& guid, const char* address) {
    return Result(portal_.DeleteUserDevice(Ask(who, Registration(guid, address))));
  };
  EXPECT_EQ(remove(bob_, ann_.guid, "CCDD"), "not registered");
  EXPECT_EQ(remove(bob_, ann_.guid, "AABB"), "success");
  EXPECT_EQ(remove(ann_, ann_.guid, "AABB"), "not registered");
  EXPECT_EQ(remove(system_, "qornsystem", "AABB"), "not registered");
  EXPECT_FALSE(devices_.IsRegistered(ann_.guid, "AABB"));
}

TEST_F(PortalTest, HandsOutTheServersWithMarkupEscaped) {
  const Answer answer = portal_.GetNtsServerInfo(
      Ask(system_, "<userId>qornsystem</userId><serverType>T</serverType>"));
  EXPECT_EQ(answer.body,
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?><serverInfo>"
            "<PresenceServer>p&lt;&amp;&gt;</PresenceServer><STUNServer>s</STUNServer>"
            "<TURNServer>t</TURNServer><ConnPort>1</ConnPort><Domain>d</Domain></serverInfo>");
}

TEST_F(PortalTest, RefusesWhoeverDoesNotProveWhoAsks) {
  const Identity kCases[] = {
      {ann_.guid, bob_.token},    {ann_.guid, ""}, {"", ""}, {"", ann_.token},
      {"qornsystem", ann_.token},
  };
  for (const Identity& who : kCases) {
    const std::string both = Registration(who.guid, "AABB") + "<userId>" + who.guid + "</userId>";
    for (const auto handler : {&Portal::AddUserDevice, &Portal::DeleteUserDevice,
                               &Portal::GetUserDevice, &Portal::GetNtsServerInfo}) {
      const Answer answer = (portal_.*handler)(Ask(who, both));
      EXPECT_EQ(answer.status, 403) << who.guid << " " << who.token;
      EXPECT_EQ(Result(answer), "forbidden");
    }
  }
  EXPECT_EQ(portal_.AddUserDevice(Ask(ann_, Registration(bob_.guid, "AABB"))).status, 403);
  RecordedRequest other_scheme = Ask(system_, "<userId>qornsystem</userId>");
  other_scheme.header_lines[1] = "Authorization: Bearer oauth_token=";
  EXPECT_EQ(portal_.GetUserDevice(other_scheme).status, 403);
  EXPECT_TRUE(devices_.devices().empty());
}

TEST_F(PortalTest, RefusesBodiesThatAreNoRequest) {
  std::string deep;
  for (int i = 0; i < 200'000; ++i) deep += "<a>";
  const std::string kBodies[] = {
      "",
      "userID=x",
      kDeclaration,
      "<other>" + Registration(ann_.guid, "AABB") + "</other>",
      "<dpxDevice>" + Registration(ann_.guid, "") + "</dpxDevice>",
      "<dpxDevice>" + Registration(ann_.guid, "AA<BB") + "</dpxDevice>",
      "<dpxDevice>" + Registration(ann_.guid, "AABB"),
      deep,
  };
  for (const std::string& body : kBodies) {
    RecordedRequest request = Ask(ann_, "");
    request.body = body;
    const Answer answer = portal_.AddUserDevice(request);
    EXPECT_EQ(answer.status, 400) << body.substr(0, 200);
    EXPECT_EQ(Result(answer), "malformed request");
  }
  EXPECT_TRUE(devices_.devices().empty());
}

}  // namespace
}  // namespace devcloud
