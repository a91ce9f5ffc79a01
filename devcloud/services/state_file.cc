#include "devcloud/services/state_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "devcloud/http/json_text.h"

namespace devcloud {

using Json = nlohmann::json;

// The JSON library finds these six by argument-dependent lookup.
static void to_json(Json& json, const Credential& credential) {
  json = {{"guid", credential.guid}, {"expires", credential.expires.time_since_epoch().count()}};
}

static void from_json(const Json& json, Credential& credential) {
  json.at("guid").get_to(credential.guid);
  credential.expires = TimePoint(TimePoint::duration(json.at("expires").get<TimePoint::rep>()));
}

// A token that does not expire is its owner alone, as in files of earlier versions.
static void to_json(Json& json, const RefreshToken& token) {
  if (!token.expires && !token.used) {
    json = token.guid;
    return;
  }
  json = {{"guid", token.guid}};
  if (token.expires) json["expires"] = token.expires->time_since_epoch().count();
  if (token.used) json["used"] = token.used->time_since_epoch().count();
}

static void from_json(const Json& json, RefreshToken& token) {
  if (json.is_string()) {
    json.get_to(token.guid);
    return;
  }
  json.at("guid").get_to(token.guid);
  const auto read = [&json](const char* name, std::optional<TimePoint>* time) {
    if (json.contains(name))
      *time = TimePoint(TimePoint::duration(json.at(name).get<TimePoint::rep>()));
  };
  read("expires", &token.expires);
  read("used", &token.used);
}

static void to_json(Json& json, const Device& device) {
  json = {{"physical_address", device.physical_address}, {"users", device.users}};
}

static void from_json(const Json& json, Device& device) {
  json.at("physical_address").get_to(device.physical_address);
  json.at("users").get_to(device.users);
}

namespace {

std::string FormatState(const AccountRecords& accounts, const std::vector<Device>& devices) {
  const Json json = {{"users", accounts.guids},
                     {"codes", accounts.codes},
                     {"access_tokens", accounts.access_tokens},
                     {"refresh_tokens", accounts.refresh_tokens},
                     {"devices", devices}};
  return WriteJson(json, 1) + "\n";
}

void ParseState(const std::string& text, AccountRecords* accounts, std::vector<Device>* devices) {
  const Json json = ParseJson(text);
  json.at("users").get_to(accounts->guids);
  json.at("codes").get_to(accounts->codes);
  json.at("access_tokens").get_to(accounts->access_tokens);
  json.at("refresh_tokens").get_to(accounts->refresh_tokens);
  json.at("devices").get_to(*devices);
}

// The file's content, or null if it does not exist but could be created. Throws std::system_error
// otherwise, so that a wrong path stops the start and not the first request.
std::optional<std::string> ReadFile(const std::string& path) {
  const auto check = [](bool is_good) {
    if (!is_good) throw std::system_error(errno, std::generic_category());
  };
  if (std::filesystem::is_directory(path)) {
    throw std::system_error(std::make_error_code(std::errc::is_a_directory));
  }
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    check(errno == ENOENT);
    const std::string folder = std::filesystem::path(path).parent_path();
    check(access(folder.empty() ? "." : folder.c_str(), W_OK) == 0);
    return std::nullopt;
  }
  return std::string{std::istreambuf_iterator<char>(file), {}};
}

void Replace(const std::string& path, const std::string& text) {
  // A rename within a folder is atomic: a crash leaves the old file or the new one.
  const std::string draft = path + ".new";
  // std::ofstream takes no mode, and a chmod afterwards would leave a moment in which others can
  // read.
  const mode_t previous = umask(S_IRWXG | S_IRWXO);
  std::ofstream file(draft, std::ios::binary | std::ios::trunc);
  umask(previous);
  file << text << std::flush;
  if (!file || std::rename(draft.c_str(), path.c_str()) != 0) {
    throw std::runtime_error(path + ": the state cannot be written");
  }
}

}  // namespace

StateFile::StateFile(std::string path, Accounts& accounts, Devices& devices)
    : path_(std::move(path)), accounts_(accounts), devices_(devices) {}

bool StateFile::Load(std::string* error) {
  if (path_.empty()) return true;
  // Read into locals, so that a broken file changes neither.
  AccountRecords accounts;
  std::vector<Device> devices;
  try {
    const std::optional<std::string> text = ReadFile(path_);
    if (!text) return true;
    ParseState(*text, &accounts, &devices);
  } catch (const Json::exception&) {
    *error = path_ + ": not a state file of this program; it is left as it is";
    return false;
  } catch (const std::system_error& failure) {
    *error = path_ + ": " + failure.code().message();
    return false;
  }
  accounts_.Restore(std::move(accounts));
  devices_.Restore(std::move(devices));
  return true;
}

void StateFile::Save() {
  if (path_.empty()) return;
  base::AutoLock lock(lock_);
  std::string text = FormatState(accounts_.records(), devices_.devices());
  if (text == saved_text_) return;  // most requests change nothing
  Replace(path_, text);
  saved_text_ = std::move(text);
}

}  // namespace devcloud
