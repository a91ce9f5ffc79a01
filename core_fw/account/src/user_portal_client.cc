#include "core_fw/account/src/user_portal_client.h"

#include <tinyxml.h>

#include <cstring>

#include "base/location.h"
#include "core_fw/account/src/account_log.h"
#include "core_fw/account/src/dates.h"
#include "core_fw/account/src/identifiers.h"
#include "core_fw/account/src/xml_depth.h"

namespace account {
namespace {

constexpr char kXmlStart[] = "<?xml";
constexpr char kDeclaration[] = "<?xml version=\"1.0\" standalone=\"yes\"?>";
constexpr char kPeerIdOperation[] = "GetPeerIDFromUserPortal";
constexpr char kNtsOperation[] = "GetNTSServerInfoFromUserPortal";
// TinyXML recurses for each level. This depth fits a stack of 512 KiB, the smallest that a caller's
// thread has.
constexpr int kDeepestAnswer = 1000;

bool Fail(const char* operation, const char* what) {
  Log(FROM_HERE, kSeverityFailure, operation, {operation, " Error (", what, ")"});
  return false;
}

std::string Element(const char* name, const std::string& content) {
  std::string text = "<";
  return text.append(name).append(">").append(content).append("</").append(name).append(">");
}

std::string Document(const std::string& children) {
  return kDeclaration + Element("dpxDevice", children);
}

std::string Post(const PortalSettings& settings, const PortalIdentity& identity, const char* path,
                 const std::string& body, HttpResult* http_result) {
  *http_result = kHttpOtherStatus;  // Stays if libcurl cannot even make a handle.
  const std::vector<std::string> headers =
      MakePortalHeaders(settings, identity, CurrentTimestamp(), MakeUuid(kUuidOfNonce));
  return SendRequest(headers, settings.url + path, 1, body, http_result);
}

// The steps with which reading any answer begins. Returns what went wrong, or null.
const char* ParseAnswer(HttpResult http_result, const std::string& response,
                        TiXmlDocument* document) {
  if (http_result != kHttpOk) return "SendRequest response error";
  if (response.empty()) return "response empty";
  const size_t start = response.find(kXmlStart);
  if (start == std::string::npos) return "output_xml empty";
  std::string xml = response.substr(start);
  xml.resize(std::strlen(xml.c_str()));  // The XML library stops at a zero byte.
  // The parser's own error is ignored: a document that breaks off counts as far as it goes. One
  // that is nested too deeply stays empty, and then lacks its root element.
  if (!XmlNestsDeeperThan(xml, kDeepestAnswer)) {
    // If a UTF-8 lead byte ends the text, the library steps over up to three bytes behind it.
    xml.append(3, '\0');
    document->Parse(xml.c_str(), nullptr, TIXML_DEFAULT_ENCODING);
  }
  return nullptr;
}

// The text of the first child of that name, or "".
std::string ChildText(const TiXmlElement& parent, const char* name) {
  const TiXmlElement* child = parent.FirstChildElement(name);
  const char* text = child == nullptr ? nullptr : child->GetText();
  return text == nullptr ? std::string() : std::string(text);
}

}  // namespace

std::vector<std::string> MakePortalHeaders(const PortalSettings& settings,
                                           const PortalIdentity& identity,
                                           const std::string& timestamp, const std::string& nonce) {
  return {"x-dpx-appId: " + settings.app_id,
          "x-dpx-version: v1",
          "x-dpx-userId: " + identity.user_guid,
          "x-dpx-loginId: " + identity.login_id,
          "x-dpx-authType: zep2 ",  // Deliberate: the portal expects the trailing blank.
          "Authorization: OAuth oauth_consumer_key=" + settings.app_id +
              ", oauth_token=" + identity.access_token +
              ", oauth_signature_method=_NONE_, oauth_signature=_NONE_, oauth_timestamp=" +
              timestamp + ", oauth_nonce=" + nonce + ", oauth_version=1.0",
          "Host: " QORN_USER_PORTAL_HOST,
          "Content-Type: text/xml"};
}

// The first two requests name the user "userID", the last two "userId": the portal's spellings.

std::string MakeAddUserBody(const std::string& user_guid, const PortalDevice& device,
                            const std::string& service) {
  return Document(Element("userID", user_guid) + Element("deviceID", "") +
                  Element("deviceTypeCode", device.type_code) +
                  Element("deviceModelID", device.model_id) + Element("deviceUniqueID", "") +
                  Element("devicePhysicalAddressText", device.physical_address_text) +
                  Element("phoneNumberText", "") + Element("mobileCountryCode", "") +
                  Element("mobileNetworkCode", "") + Element("customerCode", "") +
                  Element("softwareVersion", "") + Element("service", service));
}

std::string MakeDeleteUserBody(const std::string& user_guid,
                               const std::string& physical_address_text,
                               const std::string& service) {
  return Document(Element("userID", user_guid) +
                  Element("devicePhysicalAddressText", physical_address_text) +
                  Element("service", service));
}

std::string MakeGetDeviceBody(const std::string& user_guid, const std::string& device_type_code) {
  return Document(Element("userId", user_guid) +
                  Element("deviceTypeCode", Element("deviceType", device_type_code)));
}

std::string MakeGetNtsBody(const std::string& user_guid, const std::string& server_type) {
  return Document(Element("userId", user_guid) + Element("serverType", server_type));
}

bool ReadResultAnswer(const char* operation, HttpResult http_result, const std::string& response) {
  TiXmlDocument document;
  const char* failure = ParseAnswer(http_result, response, &document);
  if (failure != nullptr) return Fail(operation, failure);
  const TiXmlElement* root = document.FirstChildElement("response");
  if (root == nullptr || ChildText(*root, "result") != "success") {
    return Fail(operation, "xml result failure");
  }
  return true;
}

bool ReadPeerIdAnswer(HttpResult http_result, const std::string& response,
                      const std::string& physical_address_text, std::string* peer_id) {
  TiXmlDocument document;
  const char* failure = ParseAnswer(http_result, response, &document);
  if (failure != nullptr) return Fail(kPeerIdOperation, failure);
  const TiXmlElement* root = document.FirstChildElement("deviceInfoList");
  if (root == nullptr) return Fail(kPeerIdOperation, "deviceInfoList");
  // Deliberate: after the first "deviceInfo", siblings of any name are read.
  for (const TiXmlElement* device = root->FirstChildElement("deviceInfo"); device != nullptr;
       device = device->NextSiblingElement()) {
    const std::string candidate = ChildText(*device, "peerId");
    if (candidate.find(physical_address_text) != std::string::npos) {
      *peer_id = candidate;
      break;
    }
  }
  // Deliberately the output and not the last candidate: a peer ID from an earlier answer is enough.
  return peer_id->empty() ? Fail(kPeerIdOperation, "peer id empty") : true;
}

bool ReadNtsAnswer(HttpResult http_result, const std::string& response, const NtsServers& servers) {
  TiXmlDocument document;
  const char* failure = ParseAnswer(http_result, response, &document);
  if (failure != nullptr) return Fail(kNtsOperation, failure);
  const TiXmlElement* root = document.FirstChildElement("serverInfo");
  if (root != nullptr) {
    *servers.presence_server = ChildText(*root, "PresenceServer");
    *servers.stun_server = ChildText(*root, "STUNServer");
    *servers.turn_server = ChildText(*root, "TURNServer");
    *servers.conn_port = ChildText(*root, "ConnPort");
    *servers.domain = ChildText(*root, "Domain");
  }
  if (servers.presence_server->empty() || servers.stun_server->empty() ||
      servers.turn_server->empty() || servers.conn_port->empty() || servers.domain->empty()) {
    return Fail(kNtsOperation,
                "PresenceServer or STUNServer or TURNServer or ConnPort or Domain empty");
  }
  return true;
}

bool AddUserToUserPortal(const PortalSettings& settings, const PortalIdentity& identity,
                         const PortalDevice& device, const std::string& service,
                         HttpResult* http_result) {
  const std::string response =
      Post(settings, identity, "/device/adduserdevice",
           MakeAddUserBody(identity.user_guid, device, service), http_result);
  return ReadResultAnswer("AddUserToUserPortal", *http_result, response);
}

bool DeleteUserFromUserPortal(const PortalSettings& settings, const PortalIdentity& identity,
                              const std::string& removed_user_guid,
                              const std::string& physical_address_text, const std::string& service,
                              HttpResult* http_result) {
  const std::string response =
      Post(settings, identity, "/device/deleteuserdevice",
           MakeDeleteUserBody(removed_user_guid, physical_address_text, service), http_result);
  return ReadResultAnswer("DeleteUserFromUserPortal", *http_result, response);
}

bool GetPeerIDFromUserPortal(const PortalSettings& settings, const PortalIdentity& identity,
                             const std::string& device_type_code, std::string* peer_id,
                             HttpResult* http_result) {
  const std::string response =
      Post(settings, identity, "/device/getuserdevice",
           MakeGetDeviceBody(identity.user_guid, device_type_code), http_result);
  return ReadPeerIdAnswer(*http_result, response, settings.gateway_device_physical_address_text,
                          peer_id);
}

bool GetNTSServerInfoFromUserPortal(const PortalSettings& settings, const PortalIdentity& identity,
                                    const std::string& server_type, const NtsServers& servers,
                                    HttpResult* http_result) {
  const std::string response = Post(settings, identity, "/device/getntsserverinfo",
                                    MakeGetNtsBody(identity.user_guid, server_type), http_result);
  return ReadNtsAnswer(*http_result, response, servers);
}

}  // namespace account
