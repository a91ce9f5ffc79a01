#include "gateway/operations/result_names.h"

#include <charconv>
#include <iterator>

#include "core_fw/account/include/account_manager.h"

namespace gateway {
namespace {

struct Result {
  int code;
  const char* name;
  const char* message;
};

constexpr Result kResults[] = {
    {kAccountSuccess, "kAccountSuccess", "Success"},
    {kAccountInvalidSessionId, "kAccountInvalidSessionId", "Invalid Session ID"},
    {kAccountDbConnectFailure, "kAccountDbConnectFailure", "Failure to connect to the account DB"},
    {kAccountDbExecuteFailure, "kAccountDbExecuteFailure", "Failure to execute DB statement"},
    {kAccountNoUserWithUserId, "kAccountNoUserWithUserId",
     "There is no user who has this user ID in the account DB"},
    {kAccountNoUserWithUserUuid, "kAccountNoUserWithUserUuid",
     "There is no user who has this user UUID in the account DB"},
    {kAccountUserGuidMismatch, "kAccountUserGuidMismatch",
     "User GUID in the account DB is different with the user GUID in the ZEP server"},
    {kAccountNoFriendWithFriendId, "kAccountNoFriendWithFriendId",
     "There is no friend who has this friend ID and is connected with this user UUID in the "
     "account "
     "DB"},
    {kAccountNoFriendWithFriendUuid, "kAccountNoFriendWithFriendUuid",
     "There is no friend who has this friend UUID in the account DB"},
    // "vaild" is deliberate: the same words stand in the component's log lines.
    {kAccountInvalidFriendAuthCode, "kAccountInvalidFriendAuthCode",
     "This friend auth code is not vaild."},
    {kAccountNoUser, "kAccountNoUser", "There is no user in the account DB"},
    {kAccountDuplicatedUserId, "kAccountDuplicatedUserId", "Duplicated user ID in the account DB"},
    {kAccountDuplicatedUserGuid, "kAccountDuplicatedUserGuid",
     "Duplicated user GUID in the account DB"},
    {kAccountDuplicatedFriendId, "kAccountDuplicatedFriendId",
     "Duplicated friend ID in the account DB"},
    {kAccountZepServerFailure, "kAccountZepServerFailure", "Failure for ZEP server"},
    {kAccountUserPortalFailure, "kAccountUserPortalFailure", "Failure for User Portal server"},
    {kAccountInternalServerError, "kAccountInternalServerError", "Internal Server Error"},
    {kAccountRemoteAccessFailure, "kAccountRemoteAccessFailure",
     "Failure for Remote Access module"},
    {kAccountFailure, "kAccountFailure", "Failure for certain reason"},
};

}  // namespace

const char* ResultMessage(int code) {
  for (const Result& result : kResults) {
    if (result.code == code) return result.message;
  }
  return "Undefined Error code";
}

const char* ResultName(int code) {
  for (const Result& result : kResults) {
    if (result.code == code) return result.name;
  }
  return "";
}

std::string DescribeResult(int code) {
  return "answered " + std::to_string(code) + " (" + ResultMessage(code) + ")";
}

bool ParseResult(const std::string& text, int* code) {
  for (const Result& result : kResults) {
    if (text == result.name) {
      *code = result.code;
      return true;
    }
  }
  if (text == "success") {
    *code = kAccountSuccess;
    return true;
  }
  return ParseInt(text, code);
}

bool ParseInt(const std::string& text, int* number) {
  int value = 0;
  const char* end = text.data() + text.size();
  std::from_chars_result read = std::from_chars(text.data(), end, value);
  if (read.ec != std::errc() || read.ptr != end) return false;
  *number = value;
  return true;
}

}  // namespace gateway
