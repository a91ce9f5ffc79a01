#include "core_fw/account/src/account_records.h"

namespace account {

UserInfo MakeSystemAccount() {
  UserInfo system;
  system.userUuid = kSystemAccountId;
  system.userId = kSystemAccountId;
  system.userName = kSystemAccountId;
  system.userGuid = kSystemAccountId;
  return system;
}

std::string NameFromId(const std::string& id, const char* fallback) {
  const auto at = id.find('@');
  return at == std::string::npos ? std::string(fallback) : id.substr(0, at);
}

}  // namespace account
