// Keeps the users' tokens fresh: refreshes them one user at a time, before they grow too old.
#ifndef QORN_GATEWAY_KEEPER_KEEPER_H_
#define QORN_GATEWAY_KEEPER_KEEPER_H_

#include <atomic>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "base/lock.h"
#include "base/scoped_fd.h"
#include "base/thread_annotations.h"
#include "core_fw/account/include/account_manager.h"
#include "gateway/keeper/schedule.h"
#include "gateway/operations/events.h"

namespace gateway {

class Keeper {
 public:
  struct Options {
    int hours;
    std::string state_file;
    std::string device_address;
  };
  // Called on the keeper's thread, and none of them after Stop.
  struct Parts {
    AccountManager* accounts;  // borrowed
    // Whether the refreshed tokens could be stored.
    std::function<bool()> has_space;
    // Whether the account server answers a plain request; soon false once `stop` is set.
    std::function<bool(const std::atomic<bool>& stop)> server_answers;
    // For the audit; `result` is the operation's.
    std::function<void(const keeper::User& user, int result, const char* what)> on_refresh;
    // The user must sign in, or need not any more.
    std::function<void(const keeper::User& user, bool needed)> on_sign_in_needed;
    std::function<void(const std::string& line)> report;  // one line for people
    std::function<double()> random;                       // from 0 to 1
    std::function<int64_t()> now;                         // CLOCK_BOOTTIME, in seconds
    std::function<int64_t()> wall_now;                    // since 1970, in seconds
  };

  // Reads the state file, but does nothing before Start.
  Keeper(const Options& options, const Parts& parts);
  // Stops.
  ~Keeper();
  Keeper(const Keeper&) = delete;
  Keeper& operator=(const Keeper&) = delete;

  void Start();
  // Waits for a refresh that is under way. From the thread that called Start.
  void Stop();

  // Any thread.
  void NoteEvent(const SeenEvent& event);
  std::vector<keeper::User> SignInNeeded() const;

  // Does what is due and returns when to call it again: the body of the thread's loop. Without
  // Start, for one thread.
  int64_t Step();

 private:
  void Run();
  void WaitUntil(int64_t time) const;
  // False when the database cannot be read.
  bool ReadUsers();
  // "" for a user without a refresh token; unchanged when that cannot be read.
  AccountResult ReadTokenHash(const std::string& uuid, std::string* hash);
  void Refresh(const keeper::User& user);
  // `token_hash` becomes that of the token after the attempt.
  keeper::Outcome Ask(const keeper::User& user, std::string* token_hash);
  void TellChanges();
  void Save();

  const Options options_;
  const Parts parts_;
  Schedule schedule_;
  std::thread thread_;
  std::atomic<bool> stop_{false};
  base::ScopedFd wake_;
  int64_t next_look_ = 0;  // when to read all users again
  bool save_failed_ = false;

  mutable base::Lock lock_;
  std::set<std::string> signed_in_ GUARDED_BY(lock_);  // UUIDs, since the latest step
  bool users_changed_ GUARDED_BY(lock_) = true;        // likewise
  std::vector<keeper::User> needed_ GUARDED_BY(lock_);
};

}  // namespace gateway

#endif  // QORN_GATEWAY_KEEPER_KEEPER_H_
