#ifndef QORN_DEVCLOUD_SERVICES_NTS_SERVERS_H_
#define QORN_DEVCLOUD_SERVICES_NTS_SERVERS_H_

#include <string>

namespace devcloud {

// The addresses of the servers for NAT traversal that the portal gives to gateways.
struct NtsServers {
  std::string presence_server = "presence.devcloud.example";
  std::string stun_server = "stun.devcloud.example";
  std::string turn_server = "turn.devcloud.example";
  std::string connection_port = "5222";
  std::string domain = "devcloud.example";
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_SERVICES_NTS_SERVERS_H_
