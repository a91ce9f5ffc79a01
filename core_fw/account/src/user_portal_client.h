// Requests to the User Portal: which gateway belongs to which user, peer IDs, traversal servers.
#ifndef QORN_CORE_FW_ACCOUNT_SRC_USER_PORTAL_CLIENT_H_
#define QORN_CORE_FW_ACCOUNT_SRC_USER_PORTAL_CLIENT_H_

#include <string>
#include <vector>

#include "core_fw/account/src/https_request.h"

namespace account {

struct PortalSettings {
  std::string url;                                   // Base URL, without the request's path.
  std::string app_id;                                // The OAuth client ID.
  std::string gateway_device_physical_address_text;  // This gateway's.
};

// On whose behalf a request is made.
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

// Where the traversal servers' addresses go.
struct NtsServers {
  std::string* presence_server;
  std::string* stun_server;
  std::string* turn_server;
  std::string* conn_port;
  std::string* domain;
};

// The eight header lines, and the bodies. Values are deliberately inserted as they are.
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

// Read an answer, header blocks included. Any thread, each with outputs of its own. False, with one
// line logged under `operation`, when it is not what the request needs.
bool ReadResultAnswer(const char* operation, HttpResult http_result, const std::string& response);
// The first peer ID that holds `physical_address_text`; without one, an ID that `peer_id` already
// holds is deliberately good enough.
bool ReadPeerIdAnswer(HttpResult http_result, const std::string& response,
                      const std::string& physical_address_text, std::string* peer_id);
// Writes what the answer holds, missing elements as ""; an answer without server information
// leaves what is held. True when none of the five is empty then.
bool ReadNtsAnswer(HttpResult http_result, const std::string& response, const NtsServers& servers);

// The requests. They block; any thread.
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
