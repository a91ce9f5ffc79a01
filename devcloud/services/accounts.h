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

// Whose a code or token is, and until when.
struct Credential {
  std::string guid;
  TimePoint expires;
};

// All that the account server knows. Codes and tokens are the keys of their maps.
struct AccountRecords {
  std::map<std::string, std::string> guids;  // by user ID
  std::map<std::string, Credential> codes;
  std::map<std::string, Credential> access_tokens;
  std::map<std::string, std::string> refresh_tokens;  // the GUID; they do not grow old
};

struct TokenGrant {
  std::string guid;
  std::string access_token;
  std::string refresh_token;
  std::chrono::seconds lifetime;
};

// Accounts with their codes and tokens. Every code, token and GUID is made of letters, digits and
// "-" alone, since gateways put them into forms and XML as they are. Thread-safe.
class Accounts {
 public:
  // The clock is borrowed.
  Accounts(const Clock& clock, std::chrono::seconds access_token_lifetime);

  // "" for an empty user ID; an account is made for a new one. The code lives 10 minutes.
  std::string IssueCode(const std::string& user_id);

  // Null for a code or token that is unknown, used or too old. Both use up what they are given.
  std::optional<TokenGrant> RedeemCode(const std::string& code);
  std::optional<TokenGrant> Refresh(const std::string& refresh_token);

  bool AcceptsToken(const std::string& guid, const std::string& access_token) const;

  // "" when there is no such account.
  std::string GuidOf(const std::string& user_id) const;

  AccountRecords records() const;
  void Restore(AccountRecords records);

 private:
  TokenGrant Issue(const std::string& guid) EXCLUSIVE_LOCKS_REQUIRED(lock_);
  void ForgetExpired() EXCLUSIVE_LOCKS_REQUIRED(lock_);

  const Clock& clock_;
  const std::chrono::seconds access_token_lifetime_;
  mutable base::Lock lock_;
  AccountRecords records_ GUARDED_BY(lock_);
};

}  // namespace devcloud

#endif  // QORN_DEVCLOUD_SERVICES_ACCOUNTS_H_
