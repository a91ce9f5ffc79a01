#include "gateway/maintenance/manifest.h"

#include <nlohmann/json.hpp>

#include "gateway/output/clock_text.h"
#include "gateway/process/sha256.h"

namespace gateway {
namespace {

constexpr char kFormat[] = "qorn-account-backup";
// Increase it with each change that an older program would misread.
constexpr int kVersion = 1;
constexpr char kTimeFormat[] = "%Y-%m-%dT%H:%M:%SZ";

std::string Dump(const nlohmann::ordered_json& json) {
  return json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

std::string Counted(size_t count, const std::string& singular) {
  return std::to_string(count) + " " + singular + (count == 1 ? "" : "s");
}

}  // namespace

std::string EncodeManifest(const Manifest& manifest, const std::string& database) {
  nlohmann::ordered_json json = {{"format", kFormat},
                                 {"version", kVersion},
                                 {"time", UtcText(manifest.time)},
                                 {"device_address", manifest.device_address},
                                 {"users", manifest.users},
                                 {"friends", manifest.friends},
                                 {"tokens", manifest.tokens},
                                 {"database_sha256", Sha256(database)},
                                 {"manifest_sha256", ""}};
  json["manifest_sha256"] = Sha256(Dump(json));
  return Dump(json);
}

bool DecodeManifest(const std::string& text, Manifest* manifest, std::string* error) {
  *error = "is not a copy that qorn-gateway backup made";
  const nlohmann::json json = nlohmann::json::parse(text, nullptr, false);
  try {
    if (json.at("format") != kFormat) return false;
    const int version = json.at("version");
    if (version > kVersion) {
      *error = "was made by a newer version (format " + std::to_string(version) +
               "; this program reads " + std::to_string(kVersion) + ")";
      return false;
    }
    std::tm time{};
    const std::string time_text = json.at("time");
    if (strptime(time_text.c_str(), kTimeFormat, &time) == nullptr) return false;
    manifest->time = timegm(&time);
    json.at("device_address").get_to(manifest->device_address);
    json.at("users").get_to(manifest->users);
    json.at("friends").get_to(manifest->friends);
    json.at("tokens").get_to(manifest->tokens);
  } catch (const nlohmann::json::exception&) {
    return false;
  }
  return true;
}

std::string DescribeContent(const Manifest& manifest) {
  return Counted(manifest.users, "user") + ", " + Counted(manifest.friends, "friend") + ", " +
         (manifest.tokens ? "with tokens" : "without tokens");
}

}  // namespace gateway
