// The service's worker: the thread, and what it does once a minute.
#ifndef QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_CHECK_THREAD_H_
#define QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_CHECK_THREAD_H_

#include <atomic>
#include <string>

#include "base/location.h"
#include "base/message_loop.h"
#include "base/simple_thread.h"
#include "base/timer.h"
#include "core_fw/account/include/account_manager.h"
#include "core_fw/account/src/account_controller.h"
#include "core_fw/account/src/session_table.h"

namespace account {

// Fetches the network setting and signs idle sessions out, once a minute. Worker thread only.
class AccountChecker {
 public:
  AccountChecker();
  AccountChecker(const AccountChecker&) = delete;
  AccountChecker& operator=(const AccountChecker&) = delete;

  // Allocates everything that the timer needs, so that an allocation failure stops the start of the
  // worker and never a tick.
  void Prepare();
  // Tries to fetch the network setting, then starts the timer: the first tick is 60 seconds later.
  void StartRepeat();
  // One tick. It ends at the first failure, which is logged; the remaining sessions wait for the
  // next tick.
  void AddAndCheckCount();
  void StopRepeat();
  // Where the timer says that it was started.
  const tracked_objects::Location& started_from() const { return timer.posted_from(); }

 private:
  // Counts the tick for one session and signs the session out if it has expired. False ends the
  // tick.
  bool SignOutIfIdle(const std::string& session_id);
  // Logs the result and returns false.
  bool Fail(AccountResult result);

  AccountController* controller;
  SessionTable* sessionTable;
  base::Timer timer;
};

// Runs the checker in a message loop. Run is called on the thread itself, everything else on the
// thread that starts and stops the service.
class AccountCheckThread : public base::SimpleThread {
 public:
  AccountCheckThread();
  void Run() override;

  // Returns once the thread has its loop and its timer, or false if it could not allocate them: Run
  // has then returned.
  bool WaitUntilPrepared();
  // Makes the thread leave its loop. Call it once, between WaitUntilPrepared and Join.
  static void ExitThread(AccountCheckThread* thread);

 private:
  enum class State { kStarting, kPrepared, kFailed };

  void SetState(State state);

  MessageLoop* messageLoop = nullptr;  // On the thread's own stack; read only once it is prepared.
  std::atomic<State> state_{State::kStarting};
};

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_CHECK_THREAD_H_
