#include "core_fw/account/src/account_check_thread.h"

#include <vector>

#include "base/bind.h"
#include "base/time.h"
#include "core_fw/account/src/account_event.h"
#include "core_fw/account/src/account_log.h"
#include "core_fw/account/src/account_result.h"

namespace account {

AccountChecker::AccountChecker()
    : controller(AccountController::GetInstance()),
      sessionTable(SessionTable::GetInstance()),
      timer(true, true) {}

void AccountChecker::Prepare() {
  // Deliberately neither this function nor this file: the timer is known by these two names.
  const tracked_objects::Location start("StartRepeat",
                                        "core_fw/account/src/account_manager_impl.cc", __LINE__);
  // Starting allocates, resetting does not. So the timer is started here once for its memory, and
  // StartRepeat can reset it without failing.
  timer.Start(start, base::TimeDelta::FromMicroseconds(60000000),
              base::Bind(&AccountChecker::AddAndCheckCount, base::Unretained(this)));
  timer.Stop();
}

void AccountChecker::StartRepeat() {
  try {
    controller->InitNetworkSetting();
  } catch (...) {  // Out of memory: the next tick retries.
  }
  timer.Reset();
}

void AccountChecker::StopRepeat() { timer.Stop(); }

void AccountChecker::AddAndCheckCount() {
  try {
    if (controller->GetNetworkSettingStatus() != 1) controller->InitNetworkSetting();
    // A copy, because publishing a sign-out may make a listener open or close sessions.
    std::vector<std::string> session_ids;
    const AccountResult result = sessionTable->GetAllSessionIds(&session_ids);
    if (result != kAccountSuccess) {
      Fail(result);
      return;
    }
    for (const std::string& session_id : session_ids) {
      if (!SignOutIfIdle(session_id)) return;
    }
  } catch (...) {  // Out of memory: the thread must survive, and the next tick retries.
    try {
      Fail(kAccountFailure);
    } catch (...) {  // The line is lost, too.
    }
  }
}

bool AccountChecker::Fail(AccountResult result) {
  LogFailure(FROM_HERE, "AddAndCheckCount", AccountResultMessage(result));
  return false;
}

bool AccountChecker::SignOutIfIdle(const std::string& session_id) {
  bool expired = false;
  sessionTable->CountAndCheckExpiry(session_id, &expired);
  if (!expired) return true;
  // No lock spans these steps. If a caller signs the session out in between, the look-up fails and
  // the tick ends; the other sessions lose no more than this one minute.
  std::string user_id;
  AccountResult result = sessionTable->GetSessionUserId(session_id, &user_id);
  if (result != kAccountSuccess) return Fail(result);
  result = sessionTable->RemoveSession(session_id);
  if (result != kAccountSuccess) return Fail(result);
  std::string user_uuid;
  result = controller->GetUserUUIDFromUserID(user_id, &user_uuid);
  if (result != kAccountSuccess) return Fail(result);
  // The same event as for an explicit sign-out, so listeners need to know one kind only.
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
    // Reported before StartRepeat, which may wait for the cloud: the service must not.
    SetState(State::kPrepared);
    checker.StartRepeat();
    MessageLoop::current()->Run();
    checker.StopRepeat();
    messageLoop = nullptr;
  } catch (...) {  // Only what precedes SetState throws, so nobody uses the loop yet.
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

// PostTask cannot throw here: a new queue has room for the first task, and nobody else posts.
void AccountCheckThread::ExitThread(AccountCheckThread* thread) {
  thread->messageLoop->PostTask(FROM_HERE, [] { MessageLoop::current()->Quit(); });
}

}  // namespace account
