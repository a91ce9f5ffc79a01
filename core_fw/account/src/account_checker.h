// The worker thread of the service and the object that it runs.
#ifndef QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_CHECKER_H_
#define QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_CHECKER_H_

#include <atomic>
#include <string>

#include "base/message_loop.h"
#include "base/simple_thread.h"
#include "base/timer.h"
#include "core_fw/account/include/account_manager.h"
#include "core_fw/account/src/account_controller.h"
#include "core_fw/account/src/session_table.h"

namespace account {

// Fetches the network setting and ends idle sessions, once a minute. Worker thread only.
class AccountChecker {
 public:
  AccountChecker();
  AccountChecker(const AccountChecker&) = delete;
  AccountChecker& operator=(const AccountChecker&) = delete;

  // Tries the network setting and starts the timer: the first tick comes 60 seconds later.
  void StartRepeat();
  // One tick. The first failure ends it and leaves the sessions behind it for the next.
  void AddAndCheckCount();
  void StopRepeat();

 private:
  AccountResult CheckSessions();
  AccountResult CheckSession(const std::string& session_id);

  AccountController* controller;
  SessionTable* sessionTable;
  base::Timer timer;
};

class AccountCheckThread : public base::SimpleThread {
 public:
  AccountCheckThread();
  void Run() override;

  // Makes the thread leave its loop, also when it has not made it yet. Another thread calls it,
  // once, between Start and Join.
  static void ExitThread(AccountCheckThread* thread);

 private:
  std::atomic<MessageLoop*> messageLoop{nullptr};  // On the thread's own stack.
};

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_CHECKER_H_
