#include "gateway/maintenance/private_values.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <utility>
#include <vector>

#include "gateway/host/database_reader.h"
#include "gateway/output/text.h"

namespace gateway {
namespace {

// Names that the component gives to people who have none.
bool IsAnybodysName(const std::string& name) {
  return name == "Default" || name == "DefaultFriendName";
}

void AddColumns(DatabaseReader* reader, const std::string& table,
                const std::vector<std::pair<const char*, const char*>>& columns,
                Redaction* redaction) {
  for (const auto& [kind, column] : columns) {
    reader->Read(("SELECT " + std::string(column) + " FROM " + table + " ORDER BY rowid").c_str(),
                 [&, kind = kind](sqlite3_stmt* row) {
                   const std::string value = ColumnText(row, 0);
                   if (!IsAnybodysName(value)) redaction->Add(kind, value);
                 });
  }
}

// What stands between "://" and "@".
std::string UserInfo(const std::string& url) {
  const size_t begin = url.find("://");
  const size_t end = url.substr(0, url.find('/', begin + 3)).rfind('@');
  if (begin == std::string::npos || end == std::string::npos || end < begin) return "";
  return url.substr(begin + 3, end - begin - 3);
}

}  // namespace

void AddPrivateConfig(const std::map<std::string, std::string>& config, Redaction* redaction) {
  for (const auto& [key, value] : config) {
    if (key == "OAuth_AsClient_app_secret") {
      redaction->Add("secret", value);
      // As the doctor shows it.
      redaction->Add("secret", ShortenSecret(value));
    } else if (key == "account_device_physical_address_text") {
      redaction->Add("address", value);
    } else if (key == "account_default_value") {
      redaction->Add("uuid", value);
    } else {
      redaction->Add("secret", UserInfo(value));
    }
  }
}

void AddPrivateRows(const std::string& database, Redaction* redaction) {
  DatabaseReader reader(database, IsWriteAhead(database), 2000);
  AddColumns(&reader, "Users",
             {{"user", "userId"},
              {"name", "userName"},
              {"uuid", "userUuid"},
              {"guid", "userGuid"},
              {"token", "accessToken"},
              {"token", "refreshToken"}},
             redaction);
  AddColumns(&reader, "Friends",
             {{"friend", "friendId"},
              {"name", "friendName"},
              {"uuid", "friendUuid"},
              {"uuid", "userUuid"},
              {"guid", "friendGuid"},
              {"address", "friendQorDevicePhysicalAddressText"},
              {"peer", "friendQorDevicePeerId"}},
             redaction);
}

void AddAudited(const std::string& audit, Redaction* redaction) {
  // By the end of a member's name; the first that fits counts.
  static constexpr std::pair<const char*, const char*> kKinds[] = {
      {"peer_id", "peer"},     {"session_id", "uuid"}, {"user_id", "user"},
      {"friend_id", "friend"}, {"_uuid", "uuid"},      {"_name", "name"},
  };
  std::istringstream lines(audit);
  for (std::string line; std::getline(lines, line);) {
    const nlohmann::json json = nlohmann::json::parse(line, nullptr, false);
    if (!json.is_object()) continue;
    for (const auto& [key, value] : json.items()) {
      const auto* const kind =
          std::find_if(std::begin(kKinds), std::end(kKinds),
                       [&key = key](const auto& rule) { return key.ends_with(rule.first); });
      if (kind == std::end(kKinds) || !value.is_string()) continue;
      const std::string text = value;
      if (text != "qornsystem" && !IsAnybodysName(text)) redaction->Add(kind->second, text);
    }
  }
}

}  // namespace gateway
