#ifndef QORN_DEVCLOUD_SERVICES_ACCOUNTS_H_
#define QORN_DEVCLOUD_SERVICES_ACCOUNTS_H_

#include <chrono>
#include <map>
#include <optional>
#include <string>

#include "base/lock.h"
#include "base/thread_annotations.h"
#include "devcloud/services/clock.h"

namespace devcloud {

// The owner of a code or token, and when it expires.
struct Credential {
  std::string guid;
  TimePoint expires;
};

// Everything the account server stores. The maps of codes and tokens are keyed by them.
struct AccountRecords {
  std::map<std::string, std::string> guids;  // by user ID
  std::map<std::string, Credential> codes;
  std::map<std::string, Credential> access_tokens;
  std::map<std::string, std::string> refresh_tokens;  // the owner's GUID; these do not expire
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
  Accounts(const Clock& clock, std::chrono::seconds access_token_lifetime);

  // Returns a code that is valid for 10 minutes, or "" for an empty user ID. Creates an account for
  // a new user ID.
  std::string IssueCode(const std::string& user_id);

  // Exchanges a code or a refresh token for new tokens; each works once. Null if it is unknown,
  // used or expired.
  std::optional<TokenGrant> RedeemCode(const std::string& code);
  std::optional<TokenGrant> Refresh(const std::string& refresh_token);

  bool AcceptsToken(const std::string& guid, const std::string& access_token) const;

  // "" if there is no such account.
  std::string GuidOf(const std::string& user_id) const;

  AccountRecords records() const;
  void Restore(AccountRecords records);

 private:
  TokenGrant IssueTokens(const std::string& guid) EXCLUSIVE_LOCKS_REQUIRED(lock_);
  void RemoveExpired() EXCLUSIVE_LOCKS_REQUIRED(lock_);

  const Clock& clock_;
  const std::chrono::seconds access_token_lifetime_;
  mutable base::Lock lock_;
  AccountRecords records_ GUARDED_BY(lock_);
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_SERVICES_ACCOUNTS_H_
