#include "devcloud/services/accounts.h"

#include <algorithm>
#include <utility>

#include "devcloud/services/secrets.h"

namespace devcloud {
namespace {

constexpr std::chrono::minutes kCodeLifetime(10);
// How long a replaced refresh token is remembered, so that these do not add up for ever.
constexpr std::chrono::hours kReuseMemory(30 * 24);

void EraseExpired(TimePoint now, AccountRecords* records) {
  const auto is_expired = [now](const auto& entry) { return entry.second.expires <= now; };
  std::erase_if(records->codes, is_expired);
  std::erase_if(records->access_tokens, is_expired);
  std::erase_if(records->refresh_tokens, [now](const auto& entry) {
    return entry.second.expires && *entry.second.expires <= now;
  });
}

}  // namespace

Accounts::Accounts(const Clock& clock, const TokenPolicy& policy)
    : clock_(clock), policy_(policy) {}

void Accounts::SetPolicy(const TokenPolicy& policy) {
  base::AutoLock lock(lock_);
  policy_ = policy;
}

// There are no passwords: whoever names a user is that user, so that tests need no set-up.
std::string Accounts::IssueCode(const std::string& user_id) {
  if (user_id.empty()) return "";
  base::AutoLock lock(lock_);
  RemoveExpired();
  std::string& guid = records_.guids[user_id];
  if (guid.empty()) guid = NewGuid();
  std::string code = NewSecret();
  records_.codes[code] = {.guid = guid, .expires = clock_.Now() + kCodeLifetime};
  return code;
}

std::optional<TokenGrant> Accounts::RedeemCode(const std::string& code) {
  base::AutoLock lock(lock_);
  RemoveExpired();
  const auto found = records_.codes.find(code);
  if (found == records_.codes.end()) return std::nullopt;
  const std::string guid = found->second.guid;
  // A code works once (RFC 6749 section 4.1.2).
  records_.codes.erase(found);
  return IssueTokens(guid);
}

std::optional<TokenGrant> Accounts::Refresh(const std::string& refresh_token) {
  base::AutoLock lock(lock_);
  RemoveExpired();
  const auto found = records_.refresh_tokens.find(refresh_token);
  if (found == records_.refresh_tokens.end()) return std::nullopt;
  RefreshToken& token = found->second;
  const std::string guid = token.guid;
  if (const auto end = EndOf(token); end && *end <= clock_.Now()) {
    // It was replaced: RemoveExpired has left none that is merely old.
    if (policy_.reuse == TokenPolicy::Reuse::kRevokeUser) RevokeTokensOf(guid);
    return std::nullopt;
  }
  if (policy_.rotation == TokenPolicy::Rotation::kNever) {
    return IssueAccessToken(guid, refresh_token);
  }
  // Rotation (RFC 6749 section 6): a token that was stolen and used shows, as its owner's fails.
  if (policy_.rotation == TokenPolicy::Rotation::kAlways &&
      policy_.reuse == TokenPolicy::Reuse::kIgnore) {
    records_.refresh_tokens.erase(found);
  } else if (!token.used) {
    token.used = clock_.Now();
  }
  return IssueTokens(guid);
}

bool Accounts::AcceptsToken(const std::string& guid, const std::string& access_token) const {
  base::AutoLock lock(lock_);
  const auto found = records_.access_tokens.find(access_token);
  return found != records_.access_tokens.end() && found->second.guid == guid &&
         found->second.expires > clock_.Now();  // expired tokens stay until RemoveExpired
}

std::string Accounts::GuidOf(const std::string& user_id) const {
  base::AutoLock lock(lock_);
  const auto found = records_.guids.find(user_id);
  return found == records_.guids.end() ? "" : found->second;
}

std::string Accounts::OwnerOf(const std::string& secret) const {
  base::AutoLock lock(lock_);
  const auto owner_in = [&secret](const auto& credentials) {
    const auto found = credentials.find(secret);
    return found == credentials.end() ? "" : found->second.guid;
  };
  std::string guid = owner_in(records_.codes);
  if (guid.empty()) guid = owner_in(records_.access_tokens);
  if (guid.empty()) guid = owner_in(records_.refresh_tokens);
  return guid;
}

std::string Accounts::UserIdOf(const std::string& guid) const {
  base::AutoLock lock(lock_);
  for (const auto& [user_id, its_guid] : records_.guids) {
    if (its_guid == guid) return user_id;
  }
  return "";
}

AccountRecords Accounts::ValidRecords() const {
  base::AutoLock lock(lock_);
  AccountRecords valid = records_;
  for (auto& [secret, token] : valid.refresh_tokens) token.expires = EndOf(token);
  EraseExpired(clock_.Now(), &valid);
  return valid;
}

AccountRecords Accounts::records() const {
  base::AutoLock lock(lock_);
  return records_;
}

void Accounts::Restore(AccountRecords records) {
  base::AutoLock lock(lock_);
  records_ = std::move(records);
}

TokenGrant Accounts::IssueAccessToken(const std::string& guid, const std::string& refresh_token) {
  TokenGrant grant{.guid = guid,
                   .access_token = NewSecret(),
                   .refresh_token = refresh_token,
                   .lifetime = policy_.access_lifetime};
  records_.access_tokens[grant.access_token] = {.guid = guid,
                                                .expires = clock_.Now() + grant.lifetime};
  return grant;
}

TokenGrant Accounts::IssueTokens(const std::string& guid) {
  TokenGrant grant = IssueAccessToken(guid, NewSecret());
  RefreshToken& token = records_.refresh_tokens[grant.refresh_token];
  token.guid = guid;
  if (policy_.refresh_lifetime.count() > 0) token.expires = clock_.Now() + policy_.refresh_lifetime;
  return grant;
}

std::optional<TimePoint> Accounts::EndOf(const RefreshToken& token) const {
  if (!token.used) return token.expires;
  if (policy_.rotation != TokenPolicy::Rotation::kGrace) return token.used;
  const TimePoint end = *token.used + policy_.grace;
  return token.expires ? std::min(end, *token.expires) : end;
}

void Accounts::RevokeTokensOf(const std::string& guid) {
  const auto is_of_user = [&guid](const auto& entry) { return entry.second.guid == guid; };
  std::erase_if(records_.access_tokens, is_of_user);
  std::erase_if(records_.refresh_tokens, is_of_user);
}

// Called before each change, so that the maps cannot grow for ever; no timer is needed.
void Accounts::RemoveExpired() {
  const TimePoint now = clock_.Now();
  EraseExpired(now, &records_);
  const bool has_grace = policy_.rotation == TokenPolicy::Rotation::kGrace;
  const TimePoint::duration memory =
      has_grace ? std::max<TimePoint::duration>(kReuseMemory, policy_.grace) : kReuseMemory;
  std::erase_if(records_.refresh_tokens, [now, memory](const auto& entry) {
    return entry.second.used && *entry.second.used + memory <= now;
  });
}

}  // namespace devcloud
