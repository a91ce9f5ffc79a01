// Answers of the User Portal, and the nesting limit before the XML library.
#include <tinyxml.h>

#include <algorithm>

#include "core_fw/account/src/user_portal_client.h"
#include "core_fw/account/src/xml_depth.h"
#include "fuzz/fuzz.h"

namespace account {
namespace {

constexpr int kLimit = 6;

int Depth(const TiXmlNode& node) {
  int deepest = 0;
  for (const TiXmlNode* child = node.FirstChild(); child; child = child->NextSibling()) {
    if (child->ToElement() != nullptr) deepest = std::max(deepest, 1 + Depth(*child));
  }
  return deepest;
}

void CheckLimit(const std::string& answer) {
  const size_t start = answer.find("<?xml");
  if (start == std::string::npos) return;
  std::string xml = answer.substr(start, answer.find('\0', start) - start);
  const bool deeper = XmlNestsDeeperThan(xml, kLimit);
  TiXmlDocument document;
  document.Parse((xml + std::string(3, '\0')).c_str(), nullptr, TIXML_DEFAULT_ENCODING);
  fuzz::Require(deeper == (Depth(document) > kLimit), "only what nests deeper is refused");
}

void Run(const std::string& answer) {
  ReadResultAnswer("AddUserToUserPortal", kHttpOk, answer);
  const std::string address = "02-00-5E-10-00-01";
  std::string peer_id;
  const bool found = ReadPeerIdAnswer(kHttpOk, answer, address, &peer_id);
  fuzz::Require(found == (peer_id.find(address) != std::string::npos),
                "a peer ID that is taken holds the gateway's address");
  std::string texts[5];
  const NtsServers servers{&texts[0], &texts[1], &texts[2], &texts[3], &texts[4]};
  const bool whole = ReadNtsAnswer(kHttpOk, answer, servers);
  fuzz::Require(whole == std::none_of(texts, texts + 5, [](auto& text) { return text.empty(); }),
                "server information is whole when no text is empty");
  CheckLimit(answer);
}

}  // namespace
}  // namespace account

void fuzz::Run(const std::string& input) { account::Run(input); }
