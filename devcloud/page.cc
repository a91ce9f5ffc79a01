#include "devcloud/page.h"

#include <algorithm>
#include <initializer_list>
#include <string>

#include "devcloud/secrets.h"

namespace devcloud {
namespace {

constexpr std::ptrdiff_t kShownRequests = 20;

std::string Row(std::initializer_list<std::string> cells) {
  std::string row = "<tr>";
  for (const std::string& cell : cells) row += "<td>" + EscapeMarkup(cell);
  return row;
}

std::string Table(const std::string& title, const std::string& columns, const std::string& rows) {
  return "<h2>" + title + "</h2><table><tr>" + columns + rows + "</table>";
}

std::string UserIdOf(const AccountRecords& accounts, const std::string& guid) {
  for (const auto& [user_id, known] : accounts.guids) {
    if (known == guid) return user_id;
  }
  return guid;
}

std::string UserRows(const AccountRecords& accounts) {
  std::string rows;
  for (const auto& [user_id, guid] : accounts.guids) rows += Row({user_id, guid});
  return rows;
}

std::string DeviceRows(const AccountRecords& accounts, const std::vector<Device>& devices) {
  std::string rows;
  for (const Device& device : devices) {
    std::string users;
    for (const std::string& guid : device.users) {
      users += (users.empty() ? "" : ", ") + UserIdOf(accounts, guid);
    }
    rows += Row({device.physical_address, PeerIdOf(device.physical_address), users});
  }
  return rows;
}

std::string RequestRows(const std::vector<RecordedRequest>& requests) {
  std::string rows;
  const auto last = requests.rbegin() + std::min(kShownRequests, std::ssize(requests));
  for (auto it = requests.rbegin(); it != last; ++it) {
    rows += Row({it->tls ? "https" : "http", it->method, it->target,
                 std::to_string(it->raw.size()) + " bytes"});
  }
  return rows;
}

}  // namespace

Answer MakePage(const AccountRecords& accounts, const std::vector<Device>& devices,
                const std::vector<RecordedRequest>& requests) {
  std::string page =
      "<!DOCTYPE html><meta charset=utf-8><meta http-equiv=refresh content=2>"
      "<title>Development cloud</title>"
      "<style>body{font:15px sans-serif;margin:2em}td,th{padding:2px 12px 2px 0;text-align:left}"
      "</style><h1>Development cloud</h1><p><a href=/authorize>Sign in</a> for a code";
  page += Table("Users", "<th>ID<th>GUID", UserRows(accounts));
  page += Table("Devices", "<th>Address<th>Peer ID<th>Users", DeviceRows(accounts, devices));
  page += Table("Latest requests", "<th>Over<th>Method<th>Target<th>Size", RequestRows(requests));
  return {200, "text/html; charset=utf-8", page, {}};
}

}  // namespace devcloud
