// devcloud/ is the development cloud that gateways and tests talk to: an account server and a user
// portal that keep every request and fail on demand. The rooms, lowest first: http/ (connections
// and messages), page/ (the web page), faults/ (bad answers), services/ (what gateways call) and
// control/ (what tests and the page call). Each includes only rooms named before it. This file
// joins them.
#ifndef QORN_DEVCLOUD_CLOUD_H_
#define QORN_DEVCLOUD_CLOUD_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "devcloud/control/settings.h"
#include "devcloud/faults/fault.h"
#include "devcloud/http/recorded_request.h"
#include "devcloud/services/nts_servers.h"

namespace devcloud {

struct Options {
  std::string address = "127.0.0.1";
  // 0 picks a free port.
  std::uint16_t http_port = 0;
  std::uint16_t https_port = 0;
  std::uint16_t api_port = 0;
  // The IP address in the HTTPS certificate; `address` if empty.
  std::string certificate_address;
  // Physical addresses of the gateways known from the start.
  std::vector<std::string> gateways;
  NtsServers nts;
  Settings settings;
  // File with the faults that hold from the start (see ReadScenario); "" for none.
  std::string scenario_file;
  // File for accounts, tokens and registrations, created at the first change; if empty, they are
  // lost when the cloud ends. If a write fails, IssueCode and AddGateway throw std::runtime_error
  // and requests get status 500.
  std::string state_file;
};

// The development cloud: an account server and a user portal on one HTTP and one HTTPS port, and a
// third port for the page and the API, which stays open while the other two refuse connections. One
// network thread serves all three.
//
// Thread-safe; the object must outlive the calls.
class Cloud {
 public:
  // Returns a cloud that is already listening, or null with one line in `error` if a port is taken,
  // the address does not belong to this machine or a file cannot be read.
  static std::unique_ptr<Cloud> Start(const Options& options, std::string* error);

  // Closes every connection and joins the network thread.
  ~Cloud();

  Cloud(const Cloud&) = delete;
  Cloud& operator=(const Cloud&) = delete;

  // Such as "http://127.0.0.1:8080", without a trailing slash.
  std::string http_url() const;
  std::string https_url() const;
  std::string api_url() const;

  // Returns an authorisation code, as POST /authorize does: valid once, within 10 minutes. Creates
  // an account for a new user ID; returns "" for an empty one.
  std::string IssueCode(const std::string& user_id);

  // The account's GUID ("userId" in token answers), or "" if there is no such account.
  std::string UserGuid(const std::string& user_id) const;

  // Whether the access token belongs to this user and has not expired.
  bool AcceptsToken(const std::string& guid, const std::string& access_token) const;

  // The peer ID of the device with this address. It is computed from the address alone, so the
  // device need not be known yet.
  std::string PeerId(const std::string& physical_address) const;

  void AddGateway(const std::string& physical_address);
  bool IsRegistered(const std::string& guid, const std::string& physical_address) const;

  // Advances the clock by which codes and access tokens expire.
  void AdvanceClock(std::chrono::seconds step);

  void AddFault(Fault fault);
  // Also resumes stalled requests.
  void ClearFaults();

  // True closes the HTTP and HTTPS ports and their connections; false reopens the same ports. In
  // effect when it returns.
  void RefuseConnections(bool refuse);

  // The requests received on any port, oldest first, without those for the page and the API. A
  // request is recorded before it is answered. Beyond 10,000 requests or 256 MiB the oldest are
  // dropped.
  std::vector<RecordedRequest> requests() const;
  void ClearRequests();
  // Waits until at least `count` requests have been received since the start or the last
  // ClearRequests; returns false after 10 seconds.
  bool WaitForRequests(std::size_t count) const;

 private:
  class Impl;
  explicit Cloud(std::unique_ptr<Impl> impl);

  const std::unique_ptr<Impl> impl_;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_CLOUD_H_
