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

#include "devcloud/faults/fault.h"
#include "devcloud/http/recorded_request.h"
#include "devcloud/services/nts_servers.h"

namespace devcloud {

struct Options {
  std::string address = "127.0.0.1";
  // Port 0 takes a free one.
  std::uint16_t http_port = 0;
  std::uint16_t https_port = 0;
  std::uint16_t api_port = 0;
  // The IP address that the HTTPS certificate is made for; empty: `address`.
  std::string certificate_address;
  // Physical addresses of gateways that the cloud knows from the start.
  std::vector<std::string> gateways;
  NtsServers nts;
  std::chrono::seconds access_token_lifetime = std::chrono::hours(1);
  // A file that keeps accounts, tokens and registrations; empty: memory only. A file that is not
  // there yet is made at the first change. When it cannot be written, IssueCode and AddGateway
  // throw std::runtime_error and requests get status 500.
  std::string state_file;
};

// The development cloud: account server and user portal on one HTTP and one HTTPS port, and beside
// them a port for the page and the API, which stays open while connections are refused. One thread
// of its own serves all of them.
//
// Every operation may be called from any thread, except that the object must outlive the calls.
class Cloud {
 public:
  // Listens when it returns. Null, with one line in `error`, when a port is taken, the address is
  // not one of this machine's or the state file cannot be read.
  static std::unique_ptr<Cloud> Start(const Options& options, std::string* error);

  // Cuts every connection and waits for the thread.
  ~Cloud();

  Cloud(const Cloud&) = delete;
  Cloud& operator=(const Cloud&) = delete;

  // "http://127.0.0.1:PORT" and the like, without a slash at the end.
  std::string http_url() const;
  std::string https_url() const;
  std::string api_url() const;

  // An authorisation code, as POST /authorize gives it: it lives 10 minutes and works once. An
  // account is made for a user ID that has none; "" for an empty user ID.
  std::string IssueCode(const std::string& user_id);

  // The account's GUID, which a token answer calls "userId"; "" when there is no such account.
  std::string UserGuid(const std::string& user_id) const;

  // Whether the access token is a current one of this user.
  bool AcceptsToken(const std::string& guid, const std::string& access_token) const;

  // The peer ID of the device with this address. It contains the address, depends on nothing else
  // and is the same for devices that the cloud has not heard of yet.
  std::string PeerId(const std::string& physical_address) const;

  void AddGateway(const std::string& physical_address);
  bool IsRegistered(const std::string& guid, const std::string& physical_address) const;

  // Moves the clock by which codes and access tokens grow old.
  void AdvanceClock(std::chrono::seconds step);

  void AddFault(Fault fault);
  // Also lets stalled requests go on.
  void ClearFaults();

  // True cuts the connections of the HTTP and HTTPS ports and closes both; false opens the same
  // ports again. Done when it returns.
  void RefuseConnections(bool refuse);

  // What came in on any port, oldest first, except for the page and the API. A request is here
  // before its answer goes out. Beyond 10,000 requests or 256 MiB the oldest are dropped.
  std::vector<RecordedRequest> requests() const;
  void ClearRequests();
  // Waits until at least `count` requests have come since the start or the last ClearRequests;
  // false after 10 seconds.
  bool WaitForRequests(std::size_t count) const;

 private:
  class Impl;
  explicit Cloud(std::unique_ptr<Impl> impl);

  const std::unique_ptr<Impl> impl_;
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_CLOUD_H_
