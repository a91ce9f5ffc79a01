#include "devcloud/control/settings.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <nlohmann/json.hpp>
#include <string_view>

#include "devcloud/http/json_text.h"

namespace devcloud {
namespace {

using Json = nlohmann::json;

constexpr int kMaxSeconds = 1'000'000'000;
constexpr int kMaxLimit = 1'000'000;
constexpr std::string_view kGrace = "grace=";

bool ParseNumber(std::string_view text, int minimum, int maximum, int* number) {
  int parsed = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, parsed);
  if (error != std::errc() || stop != end || parsed < minimum || parsed > maximum) return false;
  *number = parsed;
  return true;
}

bool ParseSeconds(std::string_view text, int minimum, std::chrono::seconds* seconds) {
  int number = 0;
  if (!ParseNumber(text, minimum, kMaxSeconds, &number)) return false;
  *seconds = std::chrono::seconds(number);
  return true;
}

std::string ReadAccessLifetime(const Settings& settings) {
  return std::to_string(settings.tokens.access_lifetime.count());
}

bool WriteAccessLifetime(const std::string& value, Settings* settings) {
  return ParseSeconds(value, 1, &settings->tokens.access_lifetime);
}

std::string ReadRefreshLifetime(const Settings& settings) {
  return std::to_string(settings.tokens.refresh_lifetime.count());
}

bool WriteRefreshLifetime(const std::string& value, Settings* settings) {
  return ParseSeconds(value, 0, &settings->tokens.refresh_lifetime);
}

std::string ReadRotation(const Settings& settings) {
  const TokenPolicy& tokens = settings.tokens;
  if (tokens.rotation == TokenPolicy::Rotation::kAlways) return "always";
  if (tokens.rotation == TokenPolicy::Rotation::kNever) return "never";
  return std::string(kGrace) + std::to_string(tokens.grace.count());
}

bool WriteRotation(const std::string& value, Settings* settings) {
  TokenPolicy& tokens = settings->tokens;
  if (value == "always") {
    tokens.rotation = TokenPolicy::Rotation::kAlways;
  } else if (value == "never") {
    tokens.rotation = TokenPolicy::Rotation::kNever;
  } else {
    if (!value.starts_with(kGrace)) return false;
    const std::string_view seconds = std::string_view(value).substr(kGrace.size());
    if (!ParseSeconds(seconds, 1, &tokens.grace)) return false;
    tokens.rotation = TokenPolicy::Rotation::kGrace;
  }
  return true;
}

std::string ReadReuse(const Settings& settings) {
  return settings.tokens.reuse == TokenPolicy::Reuse::kIgnore ? "ignore" : "revoke-user";
}

bool WriteReuse(const std::string& value, Settings* settings) {
  if (value != "ignore" && value != "revoke-user") return false;
  settings->tokens.reuse =
      value == "ignore" ? TokenPolicy::Reuse::kIgnore : TokenPolicy::Reuse::kRevokeUser;
  return true;
}

template <int Limits::*member>
std::string ReadLimit(const Settings& settings) {
  return std::to_string(settings.limits.*member);
}

template <int Limits::*member>
bool WriteLimit(const std::string& value, Settings* settings) {
  return ParseNumber(value, 0, kMaxLimit, &(settings->limits.*member));
}

constexpr Setting kSettings[] = {
    {"access_lifetime", "SECONDS [3600]", "how long new access tokens are valid", true,
     ReadAccessLifetime, WriteAccessLifetime},
    {"refresh_lifetime", "SECONDS [0]", "how long new refresh tokens are valid; 0: for ever", true,
     ReadRefreshLifetime, WriteRefreshLifetime},
    {"rotation", "always|grace=SECONDS|never [always]",
     "when a new refresh token replaces a used one: at once, after a time in which both work, or "
     "never",
     false, ReadRotation, WriteRotation},
    {"reuse", "ignore|revoke-user [ignore]",
     "whether the use of a replaced refresh token ends the tokens of its user", false, ReadReuse,
     WriteReuse},
    {"requests_per_second", "N [0]",
     "most requests answered in a second on the ports for gateways, first in, first out; 0: no "
     "limit",
     true, ReadLimit<&Limits::requests_per_second>, WriteLimit<&Limits::requests_per_second>},
    {"connections", "N [0]",
     "most connections accepted at a time on the ports for gateways; 0: no limit", true,
     ReadLimit<&Limits::connections>, WriteLimit<&Limits::connections>},
};

bool WriteMember(const std::string& name, const Json& value, Settings* settings) {
  const auto setting = std::find_if(std::begin(kSettings), std::end(kSettings),
                                    [&name](const Setting& known) { return known.name == name; });
  if (setting == std::end(kSettings)) return false;
  if (setting->is_number) {
    return value.is_number_integer() && setting->write(WriteJson(value), settings);
  }
  return value.is_string() && setting->write(value.get<std::string>(), settings);
}

}  // namespace

std::span<const Setting> AllSettings() { return kSettings; }

std::string OptionOf(const Setting& setting) {
  std::string option = std::string("--") + setting.name;
  std::replace(option.begin(), option.end(), '_', '-');
  return option;
}

std::string SettingsJson(const Settings& settings) {
  Json json;
  for (const Setting& setting : kSettings) {
    const std::string value = setting.read(settings);
    json[setting.name] = setting.is_number ? ParseJson(value) : Json(value);
  }
  return WriteJson(json, 2);
}

bool ParseSettings(const std::string& json, Settings* settings, std::string* error) {
  const Json document = ParseJson(json);
  if (!document.is_object()) {
    *error = "a JSON object is needed";
    return false;
  }
  Settings changed = *settings;
  for (const auto& [name, value] : document.items()) {
    if (WriteMember(name, value, &changed)) continue;
    *error = "unknown setting or bad value: " + name;
    return false;
  }
  *settings = changed;
  return true;
}

}  // namespace devcloud
