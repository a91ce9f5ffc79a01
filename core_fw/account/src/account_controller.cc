#include "core_fw/account/src/account_controller.h"

#include <memory>
#include <utility>

#include "base/location.h"
#include "core_fw/account/src/account_config.h"
#include "core_fw/account/src/account_log.h"

namespace account {
namespace {

// Plain pointers, so that no static destructor runs when the host exits: threads of the host may
// still be inside the service then.
AccountDBWrapper* g_store = nullptr;
AccountController* g_controller = nullptr;

void LogMissingOption(const char* key) {
  Log(FROM_HERE, kSeverityFailure, "Init",
      {"Account Component Initialization failed as there is no ", key, " in config.xml"});
}

}  // namespace

AccountController* AccountController::GetInstance() {
  if (g_controller == nullptr) {
    auto controller = std::make_unique<AccountController>();
    controller->Init();  // Unchecked: a missing key is logged, and the component starts anyway.
    g_controller = controller.release();
  }
  return g_controller;
}

void AccountController::DestroyInstance() { delete std::exchange(g_controller, nullptr); }

AccountController::~AccountController() {
  if (g_store != nullptr) {
    delete std::exchange(g_store, nullptr);
    StopTransport();
  }
  network_setting_initialized_.store(0, std::memory_order_relaxed);
}

bool AccountController::Init() {
  {
    base::AutoLock hold(lock_);
    friend_candidates_.Clear();
  }
  if (g_store == nullptr) {
    g_store = new AccountDBWrapper;
    StartTransport();  // Here, because libcurl's start is not thread-safe: no worker exists yet.
    g_store->Init();
  }
  store_ = g_store;
  if (!ReadMandatoryOptions()) return false;
  ReadNetworkOption();
  return true;
}

bool AccountController::ReadMandatoryOptions() {
  const std::pair<const char*, std::string*> options[] = {
      {"OAuth_AsClient_app_name", &app_name_},
      {"OAuth_AsClient_app_id", &app_id_},
      {"OAuth_AsClient_app_secret", &app_secret_},
      {"account_device_type_code", &device_type_code_},
      {"account_device_model_id", &device_model_id_},
      {"account_device_physical_address_text", &device_physical_address_text_},
      {"account_service", &service_},
      {"account_server_type", &server_type_},
      {"account_zep_auth_url", &auth_url_},
      {"account_user_portal_url", &user_portal_url_},
      {"account_qor_device_name", &device_name_},
  };
  for (const auto& [key, field] : options) {
    ReadConfigOption(key, field);
    // The length and not the result counts: a key that is present but empty is missing, too.
    if (field->empty()) {
      LogMissingOption(key);
      return false;
    }
  }
  return true;
}

void AccountController::ReadNetworkOption() {
  constexpr char kKey[] = "account_enable_MIRLO_network_setting";
  std::string value;
  ReadConfigOption(kKey, &value);
  // Deliberate: the message says that start-up failed, although the key is optional.
  if (value.empty()) LogMissingOption(kKey);
  network_setting_enabled_ = value == "on";
}

TokenSettings AccountController::GetTokenSettings() const {
  return {auth_url_, app_id_, app_secret_, device_physical_address_text_};
}

PortalSettings AccountController::GetPortalSettings() const {
  return {user_portal_url_, app_id_, device_physical_address_text_};
}

PortalDevice AccountController::GetGatewayDevice() const {
  return {device_type_code_, device_model_id_, device_physical_address_text_};
}

int AccountController::GetNetworkSettingStatus() const {
  return network_setting_initialized_.load(std::memory_order_acquire);
}

AccountResult AccountController::GetNTSServerInfoAndPeerID(
    std::string* presence_server, std::string* stun_server, std::string* turn_server,
    std::string* connection_port, std::string* domain, std::string* peer_id) const {
  *presence_server = presence_server_;
  *stun_server = stun_server_;
  *turn_server = turn_server_;
  *connection_port = conn_port_;
  *domain = domain_;
  *peer_id = peer_id_;
  return kAccountSuccess;
}

AccountResult AccountController::CreateUserRequest(const std::string&, const std::string&) {
  return kAccountSuccess;
}

AccountResult AccountController::GetUserCreationRequest(const std::string&, const std::string&) {
  return kAccountSuccess;
}

AccountResult AccountController::RemoveUserRequest(const std::string&, const std::string&) {
  return kAccountSuccess;
}

AccountResult AccountController::SearchUser(const std::string&, const std::string&) {
  return kAccountSuccess;
}

AccountResult AccountController::GetUserUUIDFromUserID(const std::string& user_id,
                                                       std::string* user_uuid) {
  return store_->GetUserUUIDFromUserID(user_id, *user_uuid);
}

AccountResult AccountController::GetFriendUUIDFromFriendIDAndFriendPeerID(
    const std::string& user_uuid, const std::string& friend_id, const std::string& friend_peer_id,
    std::string* friend_uuid) {
  return store_->GetFriendUUIDFromFriendIDAndFriendPeerID(user_uuid, friend_id, friend_peer_id,
                                                          *friend_uuid);
}

AccountResult AccountController::GetAllUsersUuidList(std::vector<std::string>* user_uuids) {
  return store_->GetAllUsersUuidList(*user_uuids);
}

AccountResult AccountController::ModifyUser(const UserInfo& user) {
  return store_->ModifyUser(user);
}

AccountResult AccountController::GetAllFriendsUuidList(const std::string& user_uuid,
                                                       std::vector<std::string>* friend_uuids) {
  return store_->GetAllFriendsUuidList(user_uuid, *friend_uuids);
}

AccountResult AccountController::GetFriend(const std::string& friend_uuid,
                                           FriendInfo* friend_info) {
  return store_->GetFriend(friend_uuid, *friend_info);
}

AccountResult AccountController::DeleteAll() { return store_->DeleteAll(); }

}  // namespace account
