#include "devcloud/services/portal.h"

#include <tinyxml.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "devcloud/services/secrets.h"

namespace devcloud {
namespace {

constexpr char kSystemAccount[] = "qornsystem";

// A request has about 15 tags. Limiting their number limits the nesting too: TinyXML parses it by
// recursion and has no limit of its own.
constexpr std::ptrdiff_t kMaxTags = 1000;

std::string Element(const std::string& name, const std::string& text) {
  return "<" + name + ">" + EscapeMarkup(text) + "</" + name + ">";
}

Answer Xml(int status, const std::string& root) {
  return {.status = status,
          .content_type = "text/xml; charset=utf-8",
          .body = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + root};
}

Answer Result(int status, const std::string& result) {
  return Xml(status, "<response>" + Element("result", result) + "</response>");
}

Answer Forbidden() { return Result(403, "forbidden"); }

// The texts of the named children of a body's root; null if the body is not a request or one of
// them is missing or empty.
std::optional<std::vector<std::string>> ReadBody(const std::string& body,
                                                 std::initializer_list<const char*> names) {
  if (std::count(body.begin(), body.end(), '<') > kMaxTags) return std::nullopt;
  TiXmlDocument document;
  // TinyXML reads up to three bytes past a UTF-8 lead byte that ends the text.
  const std::string padded = body + std::string(3, '\0');
  document.Parse(padded.c_str(), nullptr, TIXML_ENCODING_UTF8);
  const TiXmlElement* root = document.FirstChildElement("dpxDevice");
  if (document.Error() || root == nullptr) return std::nullopt;
  std::vector<std::string> texts;
  for (const char* name : names) {
    const TiXmlElement* child = root->FirstChildElement(name);
    const char* text = child == nullptr ? nullptr : child->GetText();
    if (text == nullptr) return std::nullopt;
    texts.emplace_back(text);
  }
  return texts;
}

Answer Malformed() { return Result(400, "malformed request"); }

// The value of "oauth_token" in "OAuth name=value, name=value"; null if there is none.
std::optional<std::string> TokenOf(const RecordedRequest& request) {
  const std::string authorization = HeaderOf(request, "Authorization");
  constexpr std::string_view kScheme = "OAuth ";
  constexpr std::string_view kToken = "oauth_token=";
  std::string_view rest = authorization;
  if (!rest.starts_with(kScheme)) return std::nullopt;
  rest.remove_prefix(kScheme.size());
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(','), rest.size());
    const std::string_view item = Trim(rest.substr(0, end));
    if (item.starts_with(kToken)) return std::string(item.substr(kToken.size()));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return std::nullopt;
}

}  // namespace

Portal::Portal(const Accounts& accounts, Devices& devices, NtsServers nts)
    : accounts_(accounts), devices_(devices), nts_(std::move(nts)) {}

Answer Portal::AddUserDevice(const RecordedRequest& request) {
  const std::string caller = AuthenticatedUser(request);
  if (caller.empty()) return Forbidden();
  const auto texts = ReadBody(request.body, {"userID", "devicePhysicalAddressText"});
  if (!texts) return Malformed();
  if ((*texts)[0] != caller) return Forbidden();
  devices_.Register(caller, (*texts)[1]);
  return Result(200, "success");
}

Answer Portal::DeleteUserDevice(const RecordedRequest& request) {
  if (AuthenticatedUser(request).empty()) return Forbidden();
  const auto texts = ReadBody(request.body, {"userID", "devicePhysicalAddressText"});
  if (!texts) return Malformed();
  // Whose registration it is does not matter: the gateway's owner removes other users as well.
  const bool was_registered = devices_.Unregister((*texts)[0], (*texts)[1]);
  return Result(200, was_registered ? "success" : "not registered");
}

Answer Portal::GetUserDevice(const RecordedRequest& request) {
  const std::string caller = AuthenticatedUser(request);
  if (caller.empty()) return Forbidden();
  const auto texts = ReadBody(request.body, {"userId"});
  if (!texts) return Malformed();
  if ((*texts)[0] != caller) return Forbidden();
  // Users see their own gateways only; the system account looks up its peer ID among all of them.
  std::string list;
  for (const Device& device : devices_.devices()) {
    if (caller != kSystemAccount && !devices_.IsRegistered(caller, device.physical_address))
      continue;
    list += "<deviceInfo>" + Element("peerId", PeerIdOf(device.physical_address)) +
            Element("devicePhysicalAddressText", device.physical_address) + "</deviceInfo>";
  }
  return Xml(200, "<deviceInfoList>" + list + "</deviceInfoList>");
}

Answer Portal::GetNtsServerInfo(const RecordedRequest& request) {
  const std::string caller = AuthenticatedUser(request);
  if (caller.empty()) return Forbidden();
  const auto texts = ReadBody(request.body, {"userId"});
  if (!texts) return Malformed();
  if ((*texts)[0] != caller) return Forbidden();
  return Xml(200, "<serverInfo>" + Element("PresenceServer", nts_.presence_server) +
                      Element("STUNServer", nts_.stun_server) +
                      Element("TURNServer", nts_.turn_server) +
                      Element("ConnPort", nts_.connection_port) + Element("Domain", nts_.domain) +
                      "</serverInfo>");
}

std::string Portal::AuthenticatedUser(const RecordedRequest& request) const {
  const std::string guid = HeaderOf(request, "x-dpx-userId");
  const std::optional<std::string> token = TokenOf(request);
  if (!token) return "";
  // A gateway asks for its own network setting before any user has signed in on it.
  if (guid == kSystemAccount) return token->empty() ? guid : "";
  return accounts_.AcceptsToken(guid, *token) ? guid : "";
}

}  // namespace devcloud
