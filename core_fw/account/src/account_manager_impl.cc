#include "core_fw/account/src/account_manager_impl.h"

#include <cassert>
#include <new>
#include <utility>

#include "base/bind.h"
#include "base/location.h"
#include "base/time.h"
#include "core_fw/account/src/account_config.h"
#include "core_fw/account/src/account_event.h"
#include "core_fw/account/src/account_log.h"
#include "core_fw/account/src/account_result.h"

namespace account {

AccountChecker::AccountChecker()
    : controller(AccountController::GetInstance()),
      sessionTable(SessionTable::GetInstance()),
      timer(true, true) {}

void AccountChecker::Prepare() {
  timer.Start(FROM_HERE, base::TimeDelta::FromMicroseconds(60000000),
              base::Bind(&AccountChecker::AddAndCheckCount, base::Unretained(this)));
  timer.Stop();
}

void AccountChecker::StartRepeat() {
  try {
    controller->InitNetworkSetting();
  } catch (...) {  // Memory ended; the next tick tries again.
  }
  timer.Reset();
}

void AccountChecker::StopRepeat() { timer.Stop(); }

void AccountChecker::AddAndCheckCount() {
  try {
    if (controller->GetNetworkSettingStatus() != 1) controller->InitNetworkSetting();
    std::vector<std::string> session_ids;
    const AccountResult result = sessionTable->GetAllSessionIds(&session_ids);
    if (result != kAccountSuccess) {
      Fail(result);
      return;
    }
    for (const std::string& session_id : session_ids) {
      if (!EndIfIdle(session_id)) return;
    }
  } catch (...) {  // Memory ended.
    try {
      Fail(kAccountFailure);
    } catch (...) {  // The line is lost too.
    }
  }
}

bool AccountChecker::Fail(AccountResult result) {
  LogFailure(FROM_HERE, "AddAndCheckCount", AccountResultMessage(result));
  return false;
}

bool AccountChecker::EndIfIdle(const std::string& session_id) {
  bool expired = false;
  sessionTable->CountAndCheckExpiry(session_id, &expired);
  if (!expired) return true;
  std::string user_id;
  AccountResult result = sessionTable->GetSessionUserId(session_id, &user_id);
  if (result != kAccountSuccess) return Fail(result);
  result = sessionTable->RemoveSession(session_id);
  if (result != kAccountSuccess) return Fail(result);
  std::string user_uuid;
  result = controller->GetUserUUIDFromUserID(user_id, &user_uuid);
  if (result != kAccountSuccess) return Fail(result);
  if (!PublishEvent(FROM_HERE, "AddAndCheckCount", kSignOutEvent,
                    {&user_uuid, &user_id, &session_id})) {
    return false;
  }
  LogPublished(FROM_HERE, "AddAndCheckCount", kSignOutEvent);
  return true;
}

AccountCheckThread::AccountCheckThread() : SimpleThread("AccountCheckThread") {}

void AccountCheckThread::Run() {
  try {
    MessageLoop loop;
    AccountChecker checker;
    checker.Prepare();
    messageLoop = &loop;
    SetState(State::kPrepared);
    checker.StartRepeat();
    MessageLoop::current()->Run();
    checker.StopRepeat();
    messageLoop = nullptr;
  } catch (...) {  // Memory ended before the state was set.
    SetState(State::kFailed);
  }
}

void AccountCheckThread::SetState(State state) {
  state_.store(state, std::memory_order_release);
  state_.notify_one();
}

bool AccountCheckThread::WaitUntilPrepared() {
  state_.wait(State::kStarting, std::memory_order_acquire);
  return state_.load(std::memory_order_acquire) == State::kPrepared;
}

// A new loop has room for the task, so nothing is thrown here.
void AccountCheckThread::ExitThread(AccountCheckThread* thread) {
  thread->messageLoop->PostTask(FROM_HERE, [] { MessageLoop::current()->Quit(); });
}

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
    throw std::bad_alloc();
  }
  // Kept only once it runs: Shutdown waits for it.
  checkThread = std::move(thread);
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

int AccountManagerImpl::GetNetworkSettingStatus() noexcept {
  constexpr char kName[] = "GetNetworkSettingStatus";
  const int status = controller->GetNetworkSettingStatus();
  if (!LogAdmits(kSeverityProgress)) return status;
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
