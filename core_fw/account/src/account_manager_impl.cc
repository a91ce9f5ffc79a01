#include "core_fw/account/src/account_manager_impl.h"

#include <cassert>
#include <new>
#include <utility>

#include "base/location.h"
#include "core_fw/account/src/account_config.h"
#include "core_fw/account/src/account_log.h"
#include "core_fw/account/src/account_operation.h"

namespace account {

AccountManagerImpl::AccountManagerImpl() = default;
AccountManagerImpl::~AccountManagerImpl() = default;

bool AccountManagerImpl::Init() {
  std::string session_mode;
  useSession = !ReadConfigOption("account_use_session", &session_mode) || session_mode == "on";
  controller = AccountController::GetInstance();
  sessionTable = SessionTable::GetInstance();
  auto thread = std::make_unique<AccountCheckThread>();
  thread->Start();
  if (!thread->WaitUntilPrepared()) {
    thread->Join();
    throw std::bad_alloc();  // The only thing that stops the thread's start.
  }
  // Stored only once it runs, because Shutdown joins whatever is stored.
  checkThread = std::move(thread);
  return true;
}

bool AccountManagerImpl::Shutdown() {
  // The thread first: it uses the two that are destroyed below.
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
    // The sessions go last, so that a store that fails leaves everybody signed in.
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

int AccountManagerImpl::GetNetworkSettingStatus() noexcept {
  constexpr char kName[] = "GetNetworkSettingStatus";
  const int status = controller->GetNetworkSettingStatus();
  if (!LogAdmits(kSeverityProgress)) return status;
  try {  // One line, and none on entry: callers poll this.
    Log(FROM_HERE, kSeverityProgress, kName,
        {kName, "End", "  network_setting_status = ", std::to_string(status)});
  } catch (...) {  // The line is lost; the status stands.
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
