// How the answers of account server and portal are read: pure functions, no network.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core_fw/account/src/oauth_token_client.h"
#include "core_fw/account/src/user_portal_client.h"
#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kHead[] = "HTTP/1.1 200 OK\r\nX: y\r\n\r\n";
constexpr char kDeclaration[] = "<?xml version=\"1.0\"?>";

std::string Levels(int count) {
  std::string xml;
  for (int i = 0; i < count; ++i) xml += "<a>";
  return xml;
}

class AnswersTest : public testing::Test {
 protected:
  LogCapture log_;
};

TEST_F(AnswersTest, TokenFailuresInTheirOrder) {
  const std::string head = kHead;
  const std::string all = "\"access_token\":\"a\",\"refresh_token\":\"r\"";
  const struct {
    HttpResult http_result;
    std::string response;
    const char* what;  // Null where the answer is good.
  } cases[] = {
      {kHttpOtherStatus, "", "SendRequest response error"},
      {kHttpNoContent, head + "{}", "SendRequest response error"},
      {kHttpTransportError, "", "SendRequest response error"},
      {kHttpOk, "", "response empty"},
      {kHttpOk, head, "JSON response empty"},
      {kHttpOk, "ab", "JSON response empty"},
      {kHttpOk, "abc", "JSON response empty"},
      {kHttpOk, head + "[]", "Get dictionary value"},
      {kHttpOk, head + "\"text\"", "Get dictionary value"},
      {kHttpOk, head + "{", "Get dictionary value"},
      {kHttpOk, head + "{}", "access_token"},
      {kHttpOk, head + "{\"access_token\":1,\"refresh_token\":\"r\",\"userId\":\"u\"}",
       "access_token"},
      {kHttpOk, head + "{\"access_token\":\"a\",\"userId\":\"u\"}", "refresh_token"},
      {kHttpOk, head + "{" + all + "}", "userId"},
      {kHttpOk, head + "{" + all + ",\"userId\":7}", "userId"},
      {kHttpOk, head + "{" + all + ",\"userId\":\"u\",\"more\":[1]}", nullptr},
      // The first blank line counts, which is that of a redirect.
      {kHttpOk, "HTTP/1.1 302 Found\r\n\r\n" + head + "{" + all + ",\"userId\":\"u\"}",
       "Get dictionary value"},
      // Without a blank line the text begins at its fourth character.
      {kHttpOk, "xyz{" + all + ",\"userId\":\"u\"}", nullptr},
      {kHttpOk, "HTTP/1.1 200 OK\n\n{" + all + ",\"userId\":\"u\"}", "Get dictionary value"},
  };
  for (const auto& c : cases) {
    for (const TokenLogNames* names : {&kAuthCodeLogNames, &kRefreshLogNames}) {
      const bool refresh = names == &kRefreshLogNames;
      Tokens tokens;
      EXPECT_EQ(ReadTokenAnswer(c.http_result, c.response, *names, &tokens), c.what == nullptr);
      if (c.what == nullptr) {
        EXPECT_THAT(log_.Take(), IsEmpty());
        EXPECT_EQ(tokens.access_token + tokens.refresh_token + tokens.user_guid, "aru");
        continue;
      }
      const std::string message = refresh ? "GetTokensByRefreshToken" : "GetTokensByAuthCode";
      EXPECT_THAT(log_.Take(),
                  ElementsAre(Line(4, refresh ? "RefreshAccessToken" : "GetTokensByAuthCode",
                                   message + " Error (" + c.what + ")")))
          << c.response;
    }
  }
}

TEST_F(AnswersTest, EveryPortalRequestFailsAlikeBeforeItsDocument) {
  const struct {
    HttpResult http_result;
    const char* response;
    const char* what;
  } cases[] = {
      {kHttpForbidden, "HTTP/1.1 403 Forbidden\r\n\r\n", "SendRequest response error"},
      {kHttpNoContent, "HTTP/1.1 204 No Content\r\n\r\n", "SendRequest response error"},
      {kHttpOk, "", "response empty"},
      {kHttpOk, "HTTP/1.1 200 OK\r\n\r\n<response/>", "output_xml empty"},
      {kHttpOk, "HTTP/1.1 200 OK\r\n\r\n<?XML ?>", "output_xml empty"},
  };
  std::string out = "held";
  const NtsServers servers{&out, &out, &out, &out, &out};
  for (const auto& c : cases) {
    EXPECT_FALSE(ReadResultAnswer("AddUserToUserPortal", c.http_result, c.response));
    EXPECT_FALSE(ReadPeerIdAnswer(c.http_result, c.response, "AABBCC", &out));
    EXPECT_FALSE(ReadNtsAnswer(c.http_result, c.response, servers));
    std::vector<std::string> expected;
    for (const std::string operation :
         {"AddUserToUserPortal", "GetPeerIDFromUserPortal", "GetNTSServerInfoFromUserPortal"}) {
      expected.push_back(Line(4, operation, operation + " Error (" + c.what + ")"));
    }
    EXPECT_EQ(log_.Take(), expected);
  }
  EXPECT_EQ(out, "held");
}

TEST_F(AnswersTest, AResultMustBeSuccessToTheLetter) {
  const struct {
    std::string xml;
    bool good;
  } cases[] = {
      {"<response><result>success</result></response>", true},
      {"<response><x/><result> success\n</result></response>", true},  // White space is trimmed.
      {"<response><result>success", true},  // Breaks off: counts as far as it was read.
      {"<response><result>Success</result></response>", false},
      {"<response><result>success!</result></response>", false},
      {"<response><result/></response>", false},
      {"<response></response>", false},
      {"<other><result>success</result></other>", false},
      {"<response><result>no</result><result>success</result></response>", false},
      {"", false},
      {Levels(1001) + "<response><result>success</result></response>", false},
      {"<response><result>success</result></response>" + Levels(1001), false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ReadResultAnswer("DeleteUserFromUserPortal", kHttpOk, kHead + (kDeclaration + c.xml)),
              c.good)
        << c.xml;
    const std::vector<std::string> failure = {
        Line(4, "DeleteUserFromUserPortal", "DeleteUserFromUserPortal Error (xml result failure)")};
    EXPECT_EQ(log_.Take(), c.good ? std::vector<std::string>{} : failure);
  }
}

TEST_F(AnswersTest, PeerIdIsTheFirstThatHoldsTheAddress) {
  const auto device = [](const std::string& peer_id) {
    return "<deviceInfo><peerId>" + peer_id + "</peerId></deviceInfo>";
  };
  const std::string missing = "GetPeerIDFromUserPortal Error (deviceInfoList)";
  const std::string empty = "GetPeerIDFromUserPortal Error (peer id empty)";
  const struct {
    std::string list;
    const char* held;
    const char* peer_id;
    std::string failure;
  } cases[] = {
      {device("p-1") + device("x") + device("p-AABBCC-2") + device("AABBCC"), "", "p-AABBCC-2", ""},
      {device("p-1"), "", "", empty},
      {device("p-1"), "old", "old", ""},  // What is held is good enough.
      {"", "", "", empty},
      {"<deviceInfo/>" + device("AABBCC"), "old", "AABBCC", ""},
      // Siblings of any name count behind the first deviceInfo, not before it.
      {"<other><peerId>AABBCC-0</peerId></other>" + device("p") +
           "<other><peerId>AABBCC-1</peerId></other>",
       "", "AABBCC-1", ""},
      {"<other><peerId>AABBCC-0</peerId></other>", "", "", empty},
      {device("p-1") + "<deviceInfo><peerId>AABBCC", "", "AABBCC", ""},
  };
  for (const auto& c : cases) {
    std::string peer_id = c.held;
    const std::string xml = kDeclaration + ("<deviceInfoList>" + c.list) + "</deviceInfoList>";
    EXPECT_EQ(ReadPeerIdAnswer(kHttpOk, kHead + xml, "AABBCC", &peer_id), c.failure.empty());
    EXPECT_EQ(peer_id, c.peer_id) << c.list;
    const std::vector<std::string> failure = {Line(4, "GetPeerIDFromUserPortal", c.failure)};
    EXPECT_EQ(log_.Take(), c.failure.empty() ? std::vector<std::string>{} : failure);
  }
  std::string held = "old";
  EXPECT_FALSE(ReadPeerIdAnswer(kHttpOk, std::string(kHead) + kDeclaration, "AABBCC", &held));
  EXPECT_EQ(held, "old");
  EXPECT_THAT(log_.Take(), ElementsAre(Line(4, "GetPeerIDFromUserPortal", missing)));
}

TEST_F(AnswersTest, ServersAreWrittenEvenFromAPartialAnswer) {
  const std::string four =
      "<PresenceServer>p</PresenceServer><STUNServer>s</STUNServer><TURNServer>t</TURNServer>"
      "<ConnPort>1</ConnPort>";
  const struct {
    std::string xml;
    const char* held;
    const char* read;
    bool good;
  } cases[] = {
      {"<serverInfo>" + four + "<Domain>d</Domain></serverInfo>", "", "p,s,t,1,d", true},
      {"<serverInfo>" + four + "</serverInfo>", "old", "p,s,t,1,", false},
      {"<serverInfo/>", "old", ",,,,", false},
      {"<other/>", "old", "old,old,old,old,old", true},
      {"<other/>", "", ",,,,", false},
      {"<serverInfo>" + four + "<Domain>d", "", "p,s,t,1,d", true},
      {"<serverInfo>" + four.substr(0, 40), "old", "p,,,,", false},
  };
  for (const auto& c : cases) {
    std::string values[5] = {c.held, c.held, c.held, c.held, c.held};
    const NtsServers servers{&values[0], &values[1], &values[2], &values[3], &values[4]};
    EXPECT_EQ(ReadNtsAnswer(kHttpOk, kHead + (kDeclaration + c.xml), servers), c.good);
    EXPECT_EQ(values[0] + "," + values[1] + "," + values[2] + "," + values[3] + "," + values[4],
              c.read)
        << c.xml;
    const std::vector<std::string> failure = {
        Line(4, "GetNTSServerInfoFromUserPortal",
             "GetNTSServerInfoFromUserPortal Error (PresenceServer or STUNServer or TURNServer or "
             "ConnPort or Domain empty)")};
    EXPECT_EQ(log_.Take(), c.good ? std::vector<std::string>{} : failure);
  }
}

}  // namespace
}  // namespace account
