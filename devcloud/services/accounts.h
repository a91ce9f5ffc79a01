#ifndef QORN_DEVCLOUD_SERVICES_ACCOUNTS_H_
#define QORN_DEVCLOUD_SERVICES_ACCOUNTS_H_

#include <chrono>
#include <map>
#include <optional>
#include <string>

#include "base/lock.h"
#include "base/thread_annotations.h"
#include "devcloud/services/clock.h"
#include "devcloud/services/token_policy.h"

namespace devcloud {

// The owner of a code or token, and when it expires.
struct Credential {
  std::string guid;
  TimePoint expires;
};

struct RefreshToken {
  std::string guid;
  std::optional<TimePoint> expires;  // null: never
  std::optional<TimePoint> used;     // when it was first replaced by another; null: not yet
};

// Everything the account server stores. The maps of codes and tokens are keyed by them.
struct AccountRecords {
  std::map<std::string, std::string> guids;  // by user ID
  std::map<std::string, Credential> codes;
  std::map<std::string, Credential> access_tokens;
  std::map<std::string, RefreshToken> refresh_tokens;
};

struct TokenGrant {
  std::string guid;
  std::string access_token;
  std::string refresh_token;
  std::chrono::seconds lifetime;
};

// The accounts with their codes and tokens. Codes, tokens and GUIDs consist of letters, digits and
// "-", since gateways put them into forms and XML unescaped. Thread-safe.
class Accounts {
 public:
  // The clock is borrowed.
  Accounts(const Clock& clock, const TokenPolicy& policy);

  void SetPolicy(const TokenPolicy& policy);

  // Returns a code that is valid for 10 minutes, or "" for an empty user ID. Creates an account for
  // a new user ID.
  std::string IssueCode(const std::string& user_id);

  // Exchanges a code, which works once, for new tokens. Null if it is unknown, used or expired.
  std::optional<TokenGrant> RedeemCode(const std::string& code);

  // Exchanges a refresh token for new tokens as the policy has it. Null if it is unknown, expired
  // or replaced; the last may end the user's other tokens too.
  std::optional<TokenGrant> Refresh(const std::string& refresh_token);

  bool AcceptsToken(const std::string& guid, const std::string& access_token) const;

  // "" if there is no such account.
  std::string GuidOf(const std::string& user_id) const;

  // The GUID that the code or token was issued to, or "" if it is unknown.
  std::string OwnerOf(const std::string& secret) const;

  // The user ID of the account, or "" if there is no such account.
  std::string UserIdOf(const std::string& guid) const;

  // What works now. A refresh token that was replaced expires with its grace here.
  AccountRecords ValidRecords() const;

  AccountRecords records() const;
  void Restore(AccountRecords records);

 private:
  // Issues an access token to go with this refresh token.
  TokenGrant IssueAccessToken(const std::string& guid, const std::string& refresh_token)
      EXCLUSIVE_LOCKS_REQUIRED(lock_);
  // Issues both tokens.
  TokenGrant IssueTokens(const std::string& guid) EXCLUSIVE_LOCKS_REQUIRED(lock_);
  // When a refresh token stops working; null: never.
  std::optional<TimePoint> EndOf(const RefreshToken& token) const EXCLUSIVE_LOCKS_REQUIRED(lock_);
  void RevokeTokensOf(const std::string& guid) EXCLUSIVE_LOCKS_REQUIRED(lock_);
  void RemoveExpired() EXCLUSIVE_LOCKS_REQUIRED(lock_);

  const Clock& clock_;
  mutable base::Lock lock_;
  TokenPolicy policy_ GUARDED_BY(lock_);
  AccountRecords records_ GUARDED_BY(lock_);
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_SERVICES_ACCOUNTS_H_
