#include "devcloud/services/accounts.h"

#include <utility>

#include "devcloud/services/secrets.h"

namespace devcloud {
namespace {

constexpr std::chrono::minutes kCodeLifetime(10);

}  // namespace

Accounts::Accounts(const Clock& clock, std::chrono::seconds access_token_lifetime)
    : clock_(clock), access_token_lifetime_(access_token_lifetime) {}

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
  const std::string guid = found->second;
  // Rotation (RFC 6749 section 6): a token that was stolen and used shows, as its owner's fails.
  records_.refresh_tokens.erase(found);
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

AccountRecords Accounts::records() const {
  base::AutoLock lock(lock_);
  return records_;
}

void Accounts::Restore(AccountRecords records) {
  base::AutoLock lock(lock_);
  records_ = std::move(records);
}

TokenGrant Accounts::IssueTokens(const std::string& guid) {
  TokenGrant grant{.guid = guid,
                   .access_token = NewSecret(),
                   .refresh_token = NewSecret(),
                   .lifetime = access_token_lifetime_};
  records_.access_tokens[grant.access_token] = {.guid = guid,
                                                .expires = clock_.Now() + access_token_lifetime_};
  records_.refresh_tokens[grant.refresh_token] = guid;
  return grant;
}

// Called before each change, so that the maps cannot grow for ever; no timer is needed.
void Accounts::RemoveExpired() {
  const TimePoint now = clock_.Now();
  const auto is_expired = [now](const auto& entry) { return entry.second.expires <= now; };
  std::erase_if(records_.codes, is_expired);
  std::erase_if(records_.access_tokens, is_expired);
}

}  // namespace devcloud
