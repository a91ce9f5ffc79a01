#include "gateway/keeper/state_file.h"

#include <nlohmann/json.hpp>

namespace gateway {
namespace {

// Increase it with each change that another version would misread.
constexpr int kVersion = 1;

}  // namespace

std::string EncodeKeeperState(const keeper::Histories& histories, int64_t now, int64_t wall_now) {
  const int64_t offset = wall_now - now;
  nlohmann::ordered_json users = nlohmann::ordered_json::object();
  for (const auto& [uuid, history] : histories) {
    users[uuid] = {{"token_sha256", history.token_hash},
                   {"tried", history.tried + offset},
                   {"first_refused", history.first_refused + offset},
                   {"refusals", history.refusals},
                   {"sign_in_needed", history.sign_in_needed}};
  }
  const nlohmann::ordered_json state = {{"version", kVersion}, {"users", users}};
  return state.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

keeper::Histories DecodeKeeperState(const std::string& text, int64_t now, int64_t wall_now) {
  keeper::Histories histories;
  try {
    const nlohmann::json state = nlohmann::json::parse(text);
    if (state.at("version") != kVersion) return {};
    for (const auto& [uuid, user] : state.at("users").items()) {
      const int64_t offset = now - wall_now;
      if (user.at("tried").get<int64_t>() > wall_now) continue;
      histories[uuid] = {.token_hash = user.at("token_sha256"),
                         .tried = user.at("tried").get<int64_t>() + offset,
                         .first_refused = user.at("first_refused").get<int64_t>() + offset,
                         .refusals = user.at("refusals"),
                         .sign_in_needed = user.at("sign_in_needed")};
    }
  } catch (const nlohmann::json::exception&) {
    return {};
  }
  return histories;
}

}  // namespace gateway
