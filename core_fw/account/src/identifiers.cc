#include "core_fw/account/src/identifiers.h"

#include <uuid/uuid.h>

namespace account {
std::string MakeUuidWithFirst(char first) {
  // Session IDs and friend auth codes are credentials, so they must be random: libuuid gets them
  // from the kernel.
  uuid_t uuid;
  uuid_generate(uuid);
  char text[256];
  uuid_unparse_lower(uuid, text);
  text[0] = first;
  return text;
}

std::string MakeUuid(int kind) {
  switch (kind) {
    case kUuidOfUser:
      return MakeUuidWithFirst('1');
    case kUuidOfFriend:
      return MakeUuidWithFirst('2');
    case kUuidOfFriendAuthCode:
      return MakeUuidWithFirst('4');  // Deliberately not "3", which marks session IDs.
    case kUuidOfNonce:
      return MakeUuidWithFirst('5');
    default:
      return MakeUuidWithFirst('0');
  }
}

std::string NameFromId(const std::string& id, const char* fallback) {
  const auto at = id.find('@');
  return at == std::string::npos ? std::string(fallback) : id.substr(0, at);
}

}  // namespace account
