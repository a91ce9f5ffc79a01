#include "gateway/doctor/users.h"

#include <algorithm>
#include <ctime>

#include "gateway/output/clock_text.h"

namespace gateway {
namespace {

Finding ExamineTokens(const StoredUser& user) {
  Finding finding{"users.tokens", user.id, "has a refresh token, an access token and a GUID"};
  if (user.id.empty()) finding.MarkWarning("a user without ID: remove it");
  // Without it the component cannot renew the access token, and cloud operations end with a
  // failure.
  if (!user.has_refresh_token) {
    finding.MarkWarning("has no refresh token: to use the cloud, sign in again with a new code");
  }
  if (!user.has_access_token) {
    finding.MarkWarning("has no access token: refresh it or sign in with a new code");
  }
  if (!user.has_guid) {
    finding.MarkWarning(
        "has no GUID, so no sign-in with a code can match: remove and create it again");
  }
  return finding;
}

Finding ExamineFriends(const Stored& stored) {
  Finding finding{"users.friends", std::to_string(stored.friends), "friends are stored"};
  if (stored.friends_without_user > 0) {
    finding.MarkWarning(
        "friends of users who are gone: " + std::to_string(stored.friends_without_user) +
        "; only remove-friend-from-db or a factory reset takes them "
        "away");
  }
  return finding;
}

// With session mode off the default user is in the list of all users, stored or not.
Finding ExamineDefault(const ConfigValues& config, const Stored& stored) {
  Finding finding{"users.default", std::nullopt, "no default user is in use"};
  const auto mode = config.find("account_use_session");
  const std::string value = ConfigValue(config, "account_default_value");
  if (value.empty() || mode == config.end() || mode->second == "on") return finding;
  finding.value = value;
  finding.Mark(Severity::kGood, "is a stored user");
  const bool known = std::any_of(stored.users.begin(), stored.users.end(),
                                 [&](const StoredUser& user) { return user.uuid == value; });
  if (!known) {
    finding.MarkWarning(
        "account_default_value is no stored user's UUID: operations on it will fail");
  }
  return finding;
}

// A board without a clock of its own starts in the past, until the network tells it the time.
Finding ExamineClock(const Stored& stored) {
  Finding finding{"users.clock", std::nullopt, "this machine's clock is not behind the database"};
  if (stored.latest_stamp <= std::time(nullptr)) return finding;
  finding.value = UtcText(stored.latest_stamp);
  finding.MarkWarning(
      "is the latest date in the database, and this machine's clock is behind it: set the clock, "
      "by NTP if it can be reached");
  return finding;
}

}  // namespace

Findings ExamineUsers(const ConfigValues& config, const Stored& stored) {
  if (!stored.read) {
    return {{"users.stored", std::nullopt, "cannot be told: see what is wrong with the database",
             Severity::kWarning}};
  }
  Findings findings = {{"users.stored", std::to_string(stored.users.size()), "users are stored"}};
  findings.push_back(ExamineFriends(stored));
  findings.push_back(ExamineDefault(config, stored));
  findings.push_back(ExamineClock(stored));
  for (const StoredUser& user : stored.users) findings.push_back(ExamineTokens(user));
  return findings;
}

}  // namespace gateway
