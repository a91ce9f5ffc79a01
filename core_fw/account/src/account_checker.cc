#include "core_fw/account/src/account_checker.h"

#include <vector>

#include "base/bind.h"
#include "base/location.h"
#include "base/time.h"
#include "core_fw/account/src/account_event.h"
#include "core_fw/account/src/account_log.h"
#include "core_fw/account/src/account_result.h"

namespace account {
namespace {

constexpr EventType kSignOut{kEventAccountSignOut, "kEventAccountSignOut"};
// What CheckSessions answers when the line of its failure is written already.
constexpr AccountResult kLogged = 0;

}  // namespace

AccountChecker::AccountChecker()
    : controller(AccountController::GetInstance()),
      sessionTable(SessionTable::GetInstance()),
      timer(true, true) {}

void AccountChecker::StartRepeat() {
  try {
    controller->InitNetworkSetting();
  } catch (...) {  // Memory ended; the next tick tries again.
  }
  timer.Start(FROM_HERE, base::TimeDelta::FromMicroseconds(60000000),
              base::Bind(&AccountChecker::AddAndCheckCount, base::Unretained(this)));
}

void AccountChecker::StopRepeat() { timer.Stop(); }

void AccountChecker::AddAndCheckCount() {
  try {
    if (controller->GetNetworkSettingStatus() != 1) controller->InitNetworkSetting();
    const AccountResult result = CheckSessions();
    if (result != kAccountSuccess && result != kLogged) {
      LogFailure(FROM_HERE, "AddAndCheckCount", AccountResultMessage(result));
    }
  } catch (...) {  // Memory ended; the sessions wait for the next tick.
  }
}

AccountResult AccountChecker::CheckSessions() {
  std::vector<std::string> session_ids;
  AccountResult result = sessionTable->GetAllSessionIds(&session_ids);
  for (const std::string& session_id : session_ids) {
    if (result != kAccountSuccess) break;
    result = CheckSession(session_id);
  }
  return result;
}

AccountResult AccountChecker::CheckSession(const std::string& session_id) {
  bool expired = false;
  sessionTable->CountAndCheckExpiry(session_id, &expired);
  if (!expired) return kAccountSuccess;
  std::string user_id;
  AccountResult result = sessionTable->GetSessionUserId(session_id, &user_id);
  if (result != kAccountSuccess) return result;
  result = sessionTable->RemoveSession(session_id);
  if (result != kAccountSuccess) return result;
  std::string user_uuid;
  result = controller->GetUserUUIDFromUserID(user_id, &user_uuid);
  if (result != kAccountSuccess) return result;
  if (!PublishEvent(FROM_HERE, "AddAndCheckCount", kSignOut, {&user_uuid, &user_id, &session_id})) {
    return kLogged;
  }
  LogPublished(FROM_HERE, "AddAndCheckCount", kSignOut);
  return kAccountSuccess;
}

AccountCheckThread::AccountCheckThread() : SimpleThread("AccountCheckThread") {}

void AccountCheckThread::Run() {
  MessageLoop loop;
  messageLoop.store(&loop);
  messageLoop.notify_one();
  AccountChecker checker;
  checker.StartRepeat();
  MessageLoop::current()->Run();
  checker.StopRepeat();
}

void AccountCheckThread::ExitThread(AccountCheckThread* thread) {
  thread->messageLoop.wait(nullptr);
  thread->messageLoop.load()->PostTask(FROM_HERE, [] { MessageLoop::current()->Quit(); });
}

}  // namespace account
