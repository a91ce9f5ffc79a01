#include "client/src/remote_accounts.h"

#include <cstring>

#include "bus/names.h"
#include "gateway/operations/operations.h"
#include "gateway/operations/result_names.h"

namespace qorn {
namespace {

Call MakeCall(const char* name, std::vector<Argument> arguments,
              const std::vector<Output>& outputs) {
  return {.interface = std::string(bus::kInterfacePrefix) + gateway::FindOperation(name)->group,
          .member = name,
          .arguments = std::move(arguments),
          .read = [&outputs](sd_bus_message* reply) {
            bool good = true;
            for (size_t i = 0; i < outputs.size() && good; ++i) good = outputs[i].Read(reply);
            return good;
          }};
}

}  // namespace

bool Output::Read(sd_bus_message* reply) const {
  const char* value = nullptr;
  if (number != nullptr) return sd_bus_message_read_basic(reply, 'i', number) > 0;
  if (text != nullptr) {
    if (sd_bus_message_read_basic(reply, 's', static_cast<void*>(&value)) <= 0) return false;
    *text = value;
    return true;
  }
  if (sd_bus_message_enter_container(reply, 'a', "s") <= 0) return false;
  int result = 0;
  while ((result = sd_bus_message_read_basic(reply, 's', static_cast<void*>(&value))) > 0) {
    texts->emplace_back(value);
  }
  return result == 0 && sd_bus_message_exit_container(reply) >= 0;
}

std::string& LastErrorOfThread() {
  static thread_local std::string error;
  return error;
}

AccountResult CodeOf(const Result& result) {
  LastErrorOfThread().clear();
  if (result.error.empty()) return kAccountSuccess;
  int code = kAccountFailure;
  if (result.error == bus::kUnreachable) return kAccountZepServerFailure;
  if (result.error.starts_with(bus::kErrorPrefix) &&
      gateway::ParseResult("kAccount" + result.error.substr(std::strlen(bus::kErrorPrefix)),
                           &code)) {
    return code;
  }
  LastErrorOfThread() = result.text.empty() ? result.error : result.text;
  return kAccountFailure;
}

AccountResult RemoteAccounts::Invoke(const char* name, std::vector<Argument> arguments,
                                     const std::vector<Output>& outputs) {
  return CodeOf(remote_->Send(MakeCall(name, std::move(arguments), outputs)));
}

AccountResult RemoteAccounts::SignIn(const std::string& user_id, const std::string& auth_code,
                                     std::string* user_uuid, std::string* session_id,
                                     bool* connection_failed) {
  const std::vector<Output> outputs = {user_uuid, session_id};
  const Result result = remote_->Send(MakeCall("SignIn", {user_id, auth_code}, outputs));
  const AccountResult code = CodeOf(result);
  if (code == kAccountZepServerFailure) *connection_failed = result.error == bus::kUnreachable;
  return code;
}

AccountResult RemoteAccounts::GetUserInformation(const std::string& user_uuid, std::string* user_id,
                                                 std::string* user_name, std::string* sign_in_state,
                                                 std::string* user_guid, std::string* access_token,
                                                 std::string* refresh_token,
                                                 std::string* registered_date,
                                                 std::string* last_sign_in_date,
                                                 std::string* last_info_changed_date) {
  const AccountResult result =
      Invoke("GetUserInformation", {user_uuid},
             {user_id, user_name, sign_in_state, user_guid, access_token, refresh_token,
              registered_date, last_sign_in_date, last_info_changed_date});
  if (result == kAccountSuccess) {
    ReadToken(user_uuid, kUserInfoGetAccessToken, access_token);
    ReadToken(user_uuid, kUserInfoGetRefreshToken, refresh_token);
  }
  return result;
}

void RemoteAccounts::ReadToken(const std::string& user_uuid, int type, std::string* token) {
  if (!may_read_tokens_) return;
  const std::vector<Output> outputs = {token};
  Call call = MakeCall("GetUserInfoByType", {user_uuid, type}, outputs);
  // The caller did not ask for tokens, so no person is asked for a password.
  call.interactive = false;
  const Result result = remote_->Send(call);
  if (result.error == bus::kAccessDenied) may_read_tokens_ = false;
}

int RemoteAccounts::GetNetworkSettingStatus() {
  int status = 0;
  // Without an answer nothing is known to have been fetched.
  Invoke("GetNetworkSettingStatus", {}, {&status});
  return status;
}

AccountResult RemoteAccounts::CreateUser(const std::string& user_id, const std::string& auth_code,
                                         std::string* user_uuid) {
  return Invoke("CreateUser", {user_id, auth_code}, {user_uuid});
}

AccountResult RemoteAccounts::CreateUserRequest(const std::string& first,
                                                const std::string& second) {
  return Invoke("CreateUserRequest", {first, second}, {});
}

AccountResult RemoteAccounts::GetUserCreationRequest(const std::string& first,
                                                     const std::string& second) {
  return Invoke("GetUserCreationRequest", {first, second}, {});
}

AccountResult RemoteAccounts::RemoveUser(const std::string& user_id,
                                         const std::string& target_user_id) {
  return Invoke("RemoveUser", {user_id, target_user_id}, {});
}

AccountResult RemoteAccounts::RemoveUserRequest(const std::string& first,
                                                const std::string& second) {
  return Invoke("RemoveUserRequest", {first, second}, {});
}

AccountResult RemoteAccounts::SearchUser(const std::string& first, const std::string& second) {
  return Invoke("SearchUser", {first, second}, {});
}

AccountResult RemoteAccounts::GetUserUUIDFromUserID(const std::string& user_id,
                                                    std::string* user_uuid) {
  return Invoke("GetUserUUIDFromUserID", {user_id}, {user_uuid});
}

AccountResult RemoteAccounts::GetFriendUUIDFromFriendIDAndFriendPeerID(
    const std::string& user_uuid, const std::string& friend_id, const std::string& friend_peer_id,
    std::string* friend_uuid) {
  return Invoke("GetFriendUUIDFromFriendIDAndFriendPeerID", {user_uuid, friend_id, friend_peer_id},
                {friend_uuid});
}

AccountResult RemoteAccounts::SignInAlt(const std::string& user_id, const std::string& password,
                                        std::string* user_uuid, std::string* session_id) {
  return Invoke("SignInAlt", {user_id, password}, {user_uuid, session_id});
}

AccountResult RemoteAccounts::SignOut(const std::string& session_id) {
  return Invoke("SignOut", {session_id}, {});
}

AccountResult RemoteAccounts::GetAllUsersUUID(std::vector<std::string>* user_uuids) {
  return Invoke("GetAllUsersUUID", {}, {user_uuids});
}

AccountResult RemoteAccounts::GetUserInfoByType(const std::string& user_uuid, int type,
                                                std::string* value) {
  return Invoke("GetUserInfoByType", {user_uuid, type}, {value});
}

AccountResult RemoteAccounts::SetUserInfoByType(const std::string& user_uuid, int type,
                                                const std::string& value) {
  return Invoke("SetUserInfoByType", {user_uuid, type, value}, {});
}

AccountResult RemoteAccounts::AddFriendToDB(
    const std::string& user_uuid, const std::string& friend_id, const std::string& friend_guid,
    const std::string& friend_device_name, const std::string& friend_device_physical_address_text,
    const std::string& friend_peer_id, std::string* friend_uuid) {
  return Invoke("AddFriendToDB",
                {user_uuid, friend_id, friend_guid, friend_device_name,
                 friend_device_physical_address_text, friend_peer_id},
                {friend_uuid});
}

AccountResult RemoteAccounts::AddFriendCandidate(const std::string& user_uuid,
                                                 const std::string& friend_id,
                                                 const std::string& friend_peer_id,
                                                 std::string* friend_auth_code) {
  return Invoke("AddFriendCandidate", {user_uuid, friend_id, friend_peer_id}, {friend_auth_code});
}

AccountResult RemoteAccounts::AddFriendRequest(
    const std::string& friend_id, const std::string& friend_auth_code,
    const std::string& oauth_auth_code, const std::string& friend_device_model_id,
    const std::string& friend_device_name, const std::string& friend_device_physical_address_text,
    std::string* friend_uuid) {
  return Invoke("AddFriendRequest",
                {friend_id, friend_auth_code, oauth_auth_code, friend_device_model_id,
                 friend_device_name, friend_device_physical_address_text},
                {friend_uuid});
}

AccountResult RemoteAccounts::RemoveFriendFromDB(const std::string& user_uuid,
                                                 const std::string& friend_id,
                                                 const std::string& friend_peer_id) {
  return Invoke("RemoveFriendFromDB", {user_uuid, friend_id, friend_peer_id}, {});
}

AccountResult RemoteAccounts::RemoveFriendRequest(const std::string& user_uuid,
                                                  const std::string& friend_id,
                                                  const std::string& friend_peer_id) {
  return Invoke("RemoveFriendRequest", {user_uuid, friend_id, friend_peer_id}, {});
}

AccountResult RemoteAccounts::GetAllFriendsUUID(const std::string& user_uuid,
                                                std::vector<std::string>* friend_uuids) {
  return Invoke("GetAllFriendsUUID", {user_uuid}, {friend_uuids});
}

AccountResult RemoteAccounts::GetFriendInformation(const std::string& friend_uuid,
                                                   std::string* friend_id, std::string* friend_name,
                                                   std::string* friend_guid,
                                                   std::string* friend_device_name,
                                                   std::string* friend_device_physical_address_text,
                                                   std::string* friend_peer_id) {
  return Invoke("GetFriendInformation", {friend_uuid},
                {friend_id, friend_name, friend_guid, friend_device_name,
                 friend_device_physical_address_text, friend_peer_id});
}

AccountResult RemoteAccounts::DoFactoryReset() { return Invoke("DoFactoryReset", {}, {}); }

AccountResult RemoteAccounts::GetSessionInfo(const std::string& session_id, std::string* user_id) {
  return Invoke("GetSessionInfo", {session_id}, {user_id});
}

AccountResult RemoteAccounts::CheckSessionValidation(const std::string& session_id) {
  return Invoke("CheckSessionValidation", {session_id}, {});
}

AccountResult RemoteAccounts::ResetCountForSessionMaintenance(const std::string& session_id) {
  return Invoke("ResetCountForSessionMaintenance", {session_id}, {});
}

AccountResult RemoteAccounts::GetSessionLifetime(int* lifetime) {
  return Invoke("GetSessionLifetime", {}, {lifetime});
}

AccountResult RemoteAccounts::SetSessionLifetime(int lifetime) {
  return Invoke("SetSessionLifetime", {lifetime}, {});
}

AccountResult RemoteAccounts::GetNTSServerInfoAndPeerID(std::string* presence_server,
                                                        std::string* stun_server,
                                                        std::string* turn_server,
                                                        std::string* connection_port,
                                                        std::string* domain, std::string* peer_id) {
  return Invoke("GetNTSServerInfoAndPeerID", {},
                {presence_server, stun_server, turn_server, connection_port, domain, peer_id});
}

AccountResult RemoteAccounts::ParseAccountMessage(const std::string& message) {
  return Invoke("ParseAccountMessage", {message}, {});
}

AccountResult RemoteAccounts::RefreshAccessToken(const std::string& user_id) {
  return Invoke("RefreshAccessToken", {user_id}, {});
}

}  // namespace qorn
