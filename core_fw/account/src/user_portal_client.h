// Requests to the User Portal, which knows the gateway of each user, peer IDs and the servers for
// NAT traversal.
#ifndef QORN_CORE_FW_ACCOUNT_SRC_USER_PORTAL_CLIENT_H_
#define QORN_CORE_FW_ACCOUNT_SRC_USER_PORTAL_CLIENT_H_

#include <string>
#include <vector>

#include "core_fw/account/src/https_request.h"

namespace account {

struct PortalSettings {
  std::string url;                                   // Base URL, without a request's path.
  std::string app_id;                                // The OAuth client ID.
  std::string gateway_device_physical_address_text;  // This gateway's.
};

// The account on whose behalf a request is made.
struct PortalIdentity {
  std::string login_id;
  std::string user_guid;
  std::string access_token;
};

// The device that a registration is about.
struct PortalDevice {
  std::string type_code;
  std::string model_id;
  std::string physical_address_text;
};

// Outputs for the addresses of the traversal servers.
struct NtsServers {
  std::string* presence_server;
  std::string* stun_server;
  std::string* turn_server;
  std::string* conn_port;
  std::string* domain;
};

// The eight header lines, and the bodies. Values are deliberately inserted verbatim.
std::vector<std::string> MakePortalHeaders(const PortalSettings& settings,
                                           const PortalIdentity& identity,
                                           const std::string& timestamp, const std::string& nonce);
std::string MakeAddUserBody(const std::string& user_guid, const PortalDevice& device,
                            const std::string& service);
std::string MakeDeleteUserBody(const std::string& user_guid,
                               const std::string& physical_address_text,
                               const std::string& service);
std::string MakeGetDeviceBody(const std::string& user_guid, const std::string& device_type_code);
std::string MakeGetNtsBody(const std::string& user_guid, const std::string& server_type);

// Read an answer, including its header blocks. False, with one line logged under `operation`, if
// the answer is not what the request needs. Any thread.
bool ReadResultAnswer(const char* operation, HttpResult http_result, const std::string& response);
// Writes the first peer ID that contains `physical_address_text`. If there is none, a peer ID that
// `peer_id` already holds is deliberately good enough.
bool ReadPeerIdAnswer(HttpResult http_result, const std::string& response,
                      const std::string& physical_address_text, std::string* peer_id);
// Writes the five values, a missing element as "". An answer without server information leaves them
// untouched. True if none of the five is empty afterwards.
bool ReadNtsAnswer(HttpResult http_result, const std::string& response, const NtsServers& servers);

// The requests. They block. Any thread.
bool AddUserToUserPortal(const PortalSettings& settings, const PortalIdentity& identity,
                         const PortalDevice& device, const std::string& service,
                         HttpResult* http_result);
bool DeleteUserFromUserPortal(const PortalSettings& settings, const PortalIdentity& identity,
                              const std::string& removed_user_guid,
                              const std::string& physical_address_text, const std::string& service,
                              HttpResult* http_result);
bool GetPeerIDFromUserPortal(const PortalSettings& settings, const PortalIdentity& identity,
                             const std::string& device_type_code, std::string* peer_id,
                             HttpResult* http_result);
bool GetNTSServerInfoFromUserPortal(const PortalSettings& settings, const PortalIdentity& identity,
                                    const std::string& server_type, const NtsServers& servers,
                                    HttpResult* http_result);

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_USER_PORTAL_CLIENT_H_
