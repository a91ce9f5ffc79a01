#include "core_fw/account/src/account_manager_impl.h"

#include <cassert>

#include "base/location.h"
#include "core_fw/account/src/account_config.h"
#include "core_fw/account/src/account_log.h"

namespace account {

AccountManagerImpl::AccountManagerImpl() = default;
AccountManagerImpl::~AccountManagerImpl() = default;

bool AccountManagerImpl::Init() {
  std::string session_mode;
  useSession = !ReadConfigOption("account_use_session", &session_mode) || session_mode == "on";
  controller = AccountController::GetInstance();
  sessionTable = SessionTable::GetInstance();
  checkThread = std::make_unique<AccountCheckThread>();
  checkThread->Start();
  return true;
}

bool AccountManagerImpl::Shutdown() {
  if (checkThread != nullptr) {
    AccountCheckThread::ExitThread(checkThread.get());
    checkThread->Join();
    checkThread.reset();
  }
  AccountController::DestroyInstance();
  SessionTable::DestroyInstance();
  return true;
}

AccountResult AccountManagerImpl::DoFactoryReset() {
  return RunOperation(FROM_HERE, "DoFactoryReset", [&] {
    const AccountResult result = controller->DeleteAll();
    if (result != kAccountSuccess) return result;
    return sessionTable->RemoveAllSessions();
  });
}

AccountResult AccountManagerImpl::GetSessionInfo(const std::string& session_id,
                                                 std::string* user_id) {
  assert(user_id != nullptr);
  return RunOperation(FROM_HERE, "GetSessionInfo",
                      [&] { return sessionTable->GetSessionUserId(session_id, user_id); });
}

AccountResult AccountManagerImpl::CheckSessionValidation(const std::string& session_id) {
  return RunOperation(FROM_HERE, "CheckSessionValidation",
                      [&] { return sessionTable->HasSession(session_id); });
}

AccountResult AccountManagerImpl::ResetCountForSessionMaintenance(const std::string& session_id) {
  return RunOperation(FROM_HERE, "ResetCountForSessionMaintenance",
                      [&] { return sessionTable->ResetSessionCount(session_id); });
}

AccountResult AccountManagerImpl::GetSessionLifetime(int* lifetime) {
  assert(lifetime != nullptr);
  return RunOperation(FROM_HERE, "GetSessionLifetime",
                      [&] { return sessionTable->GetLifetime(lifetime); });
}

AccountResult AccountManagerImpl::SetSessionLifetime(int lifetime) {
  return RunOperation(FROM_HERE, "SetSessionLifetime",
                      [&] { return sessionTable->SetLifetime(lifetime); });
}

int AccountManagerImpl::GetNetworkSettingStatus() {
  constexpr char kName[] = "GetNetworkSettingStatus";
  const int status = controller->GetNetworkSettingStatus();
  try {  // One line, none on entry.
    Log(FROM_HERE, kSeverityProgress, kName,
        {kName, "End", "  network_setting_status = ", std::to_string(status)});
  } catch (...) {  // The line is lost, the answer holds.
  }
  return status;
}

AccountResult AccountManagerImpl::GetNTSServerInfoAndPeerID(
    std::string* presence_server, std::string* stun_server, std::string* turn_server,
    std::string* connection_port, std::string* domain, std::string* peer_id) {
  assert(presence_server != nullptr && stun_server != nullptr && turn_server != nullptr);
  assert(connection_port != nullptr && domain != nullptr && peer_id != nullptr);
  return RunOperation(FROM_HERE, "GetNTSServerInfoAndPeerID", [&] {
    return controller->GetNTSServerInfoAndPeerID(presence_server, stun_server, turn_server,
                                                 connection_port, domain, peer_id);
  });
}

}  // namespace account
