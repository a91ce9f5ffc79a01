#include "core_fw/account/src/account_result.h"

#include "core_fw/account/include/account_manager.h"

namespace account {

std::string_view AccountResultMessage(int code) {
  switch (code) {
    case kAccountSuccess:
      return "Success";
    case kAccountInvalidSessionId:
      return "Invalid Session ID";
    case kAccountDbConnectFailure:
      return "Failure to connect to the account DB";
    case kAccountDbExecuteFailure:
      return "Failure to execute DB statement";
    case kAccountNoUserWithUserId:
      return "There is no user who has this user ID in the account DB";
    case kAccountNoUserWithUserUuid:
      return "There is no user who has this user UUID in the account DB";
    case kAccountUserGuidMismatch:
      return "User GUID in the account DB is different with the user GUID in the ZEP server";
    case kAccountNoFriendWithFriendId:
      return "There is no friend who has this friend ID and is connected with this user UUID in "
             "the account DB";
    case kAccountNoFriendWithFriendUuid:
      return "There is no friend who has this friend UUID in the account DB";
    case kAccountInvalidFriendAuthCode:
      return "This friend auth code is not vaild.";  // Deliberate spelling: log readers match it.
    case kAccountNoUser:
      return "There is no user in the account DB";
    case kAccountDuplicatedUserId:
      return "Duplicated user ID in the account DB";
    case kAccountDuplicatedUserGuid:
      return "Duplicated user GUID in the account DB";
    case kAccountDuplicatedFriendId:
      return "Duplicated friend ID in the account DB";
    case kAccountZepServerFailure:
      return "Failure for ZEP server";
    case kAccountUserPortalFailure:
      return "Failure for User Portal server";
    case kAccountInternalServerError:
      return "Internal Server Error";
    case kAccountRemoteAccessFailure:
      return "Failure for Remote Access module";
    case kAccountFailure:
      return "Failure for certain reason";
    default:
      return "Undefined Error code";
  }
}

std::string AccountResultToString(int code) { return std::string(AccountResultMessage(code)); }

}  // namespace account
