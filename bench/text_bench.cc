// Reading and writing messages, requests and answers beside the JSON or XML library on the same
// bytes.
#include <tinyxml.h>

#include <nlohmann/json.hpp>

#include "bench/compare.h"
#include "bench/home.h"
#include "core_fw/account/src/account_message.h"
#include "core_fw/account/src/oauth_token_client.h"
#include "core_fw/account/src/user_portal_client.h"

namespace bench {
namespace {

constexpr int kCalls = 64;

constexpr char kHead[] =
    "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Type: application/json\r\nContent-Length: "
    "190\r\nCache-Control: no-store\r\nPragma: no-cache\r\nDate: Wed, 25 Nov 2026 02:12:23 "
    "GMT\r\n\r\n";
constexpr char kTokens[] =
    R"({"access_token":"kP3v9sQmWc0tYxR2bN7dLg5hJf8aZu1e","token_type":"Bearer","expires_in":3600,)"
    R"("refresh_token":"Vq4T1yKs8HnB6wEo2MxCj9uGr7Zd0pLa","userId":"4c1f7c2e90ab4d6f"})";
constexpr char kResult[] =
    R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?><response><result>success</result></response>)";
constexpr char kDevice[] =
    "<deviceInfo><deviceID>17</deviceID><deviceTypeCode>HGW</deviceTypeCode><deviceModelID>QG-1"
    "</deviceModelID><peerId>PEER-02-00-5E-10-00-02-1a2b3c4d</peerId></deviceInfo>";
constexpr char kNts[] =
    R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?><serverInfo><PresenceServer>)"
    "presence.example.com:5222</PresenceServer><STUNServer>stun.example.com:3478</STUNServer>"
    "<TURNServer>turn.example.com:3478</TURNServer><ConnPort>443</ConnPort><Domain>example.com"
    "</Domain></serverInfo>";

const account::FriendMessage kMessage{"ann@example.com",   "bob@example.com",
                                      "4c1f7c2e90ab4d6f",  "Summer house",
                                      "02-00-5E-10-00-02", "PEER-02-00-5E-10-00-02-1a2b3c4d"};

std::string IncomingMessage() {
  return R"({"module_name":"account","api_name":"AddFriend","param_list":[{"user_id":"ann@example.com",)"
         R"("friend_id":"bob@example.com","friend_guid":"4c1f7c2e90ab4d6f",)"
         R"("friend_qor_device_name":"Summer house",)"
         R"("friend_qor_device_physical_address_text":"02-00-5E-10-00-02",)"
         R"("friend_qor_device_peer_id":"PEER-02-00-5E-10-00-02-1a2b3c4d"}]})";
}

std::string PeerAnswer() {
  std::string xml = R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?><deviceInfoList>)";
  for (int i = 0; i < 5; ++i) xml += kDevice;
  return xml + "</deviceInfoList>";
}

void ParseJson(const std::string& text) {
  benchmark::DoNotOptimize(nlohmann::json::parse(text, nullptr, false));
}

void ParseXml(const std::string& text) {
  TiXmlDocument document;
  document.Parse(text.c_str(), nullptr, TIXML_DEFAULT_ENCODING);
  benchmark::DoNotOptimize(document.RootElement());
}

void ReadMessage(benchmark::State& state) {
  const std::string text = IncomingMessage();
  account::FriendMessage message;
  Compare(
      state, kCalls,
      [&] {
        Require(ParseFriendMessage(text, &message) == account::MessageKind::kAddFriend, "message");
      },
      [&] { ParseJson(text); });
}

void WriteMessage(benchmark::State& state) {
  Compare(
      state, kCalls, [&] { benchmark::DoNotOptimize(ComposeAddFriendMessage(kMessage)); },
      [&] {
        const nlohmann::json json{
            {"module_name", "account"},
            {"api_name", "AddFriend"},
            {"param_list",
             {{"user_id", kMessage.user_id},
              {"friend_id", kMessage.friend_id},
              {"friend_guid", kMessage.friend_guid},
              {"friend_qor_device_name", kMessage.device_name},
              {"friend_qor_device_physical_address_text", kMessage.device_physical_address_text},
              {"friend_qor_device_peer_id", kMessage.device_peer_id}}}};
        benchmark::DoNotOptimize(json.dump());
      });
}

void ReadTokens(benchmark::State& state) {
  const std::string response = std::string(kHead) + kTokens;
  const std::string json = kTokens;
  account::Tokens tokens;
  Compare(
      state, kCalls,
      [&] {
        Require(ReadTokenAnswer(account::kHttpOk, response, account::kAuthCodeLogNames, &tokens),
                "tokens");
      },
      [&] { ParseJson(json); });
}

// One reader of portal answers beside the XML library.
template <typename Read>
void ReadXml(benchmark::State& state, const std::string& xml, const Read& read) {
  const std::string response = kHead + xml;
  Compare(
      state, kCalls, [&] { Require(read(response), "answer"); }, [&] { ParseXml(xml); });
}

void ReadResult(benchmark::State& state) {
  ReadXml(state, kResult, [](const std::string& response) {
    return account::ReadResultAnswer("AddUserToUserPortal", account::kHttpOk, response);
  });
}

void ReadPeerId(benchmark::State& state) {
  std::string peer_id;
  ReadXml(state, PeerAnswer(), [&](const std::string& response) {
    return account::ReadPeerIdAnswer(account::kHttpOk, response, "02-00-5E-10-00-02", &peer_id);
  });
}

void ReadServers(benchmark::State& state) {
  std::string texts[5];
  ReadXml(state, kNts, [&](const std::string& response) {
    return account::ReadNtsAnswer(account::kHttpOk, response,
                                  {&texts[0], &texts[1], &texts[2], &texts[3], &texts[4]});
  });
}

void Put(TiXmlElement* parent, const char* name, const std::string& text) {
  auto* element = new TiXmlElement(name);
  if (!text.empty()) element->LinkEndChild(new TiXmlText(text.c_str()));
  parent->LinkEndChild(element);
}

void WriteAddUser(benchmark::State& state) {
  const account::PortalDevice device{"HGW", "QG-1", "02-00-5E-10-00-01"};
  const std::string guid = "4c1f7c2e90ab4d6f", service = "ACCOUNT";
  Compare(
      state, kCalls,
      [&] { benchmark::DoNotOptimize(account::MakeAddUserBody(guid, device, service)); },
      [&] {
        TiXmlDocument document;
        document.LinkEndChild(new TiXmlDeclaration("1.0", "", "yes"));
        auto* root = new TiXmlElement("dpxDevice");
        document.LinkEndChild(root);
        Put(root, "userID", guid);
        Put(root, "deviceID", "");
        Put(root, "deviceTypeCode", device.type_code);
        Put(root, "deviceModelID", device.model_id);
        Put(root, "deviceUniqueID", "");
        Put(root, "devicePhysicalAddressText", device.physical_address_text);
        Put(root, "service", service);
        TiXmlPrinter printer;
        printer.SetStreamPrinting();
        document.Accept(&printer);
        benchmark::DoNotOptimize(printer.Str());
      });
}

BENCHMARK(ReadMessage)->Name("text/ParseFriendMessage")->UseManualTime();
BENCHMARK(WriteMessage)->Name("text/ComposeAddFriendMessage")->UseManualTime();
BENCHMARK(ReadTokens)->Name("text/ReadTokenAnswer")->UseManualTime();
BENCHMARK(ReadResult)->Name("text/ReadResultAnswer")->UseManualTime();
BENCHMARK(ReadPeerId)->Name("text/ReadPeerIdAnswer")->UseManualTime();
BENCHMARK(ReadServers)->Name("text/ReadNtsAnswer")->UseManualTime();
BENCHMARK(WriteAddUser)->Name("text/MakeAddUserBody")->UseManualTime();

}  // namespace
}  // namespace bench

int main(int argc, char** argv) { return bench::RunBenchmarks(argc, argv); }
