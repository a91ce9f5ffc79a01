// Random operations of the account interface, for many threads at once.
#ifndef QORN_BENCH_RANDOM_STEPS_H_
#define QORN_BENCH_RANDOM_STEPS_H_

#include <functional>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <vector>

#include "core_fw/account/include/account_manager.h"
#include "gateway/console/commands.h"

namespace soak {

using Words = std::vector<std::string>;

// The first value of an output; "" when it was not written.
std::string Output(const gateway::Answer& answer, const std::string& name);

// Any thread may call any operation.
class RandomSteps {
 public:
  using CodeSource = std::function<std::string(const std::string& user_id)>;

  // The interface is borrowed; `peer_id` is what the cloud calls this gateway.
  RandomSteps(AccountManager& accounts, unsigned stable_users, CodeSource issue_code,
              std::string peer_id);
  virtual ~RandomSteps() = default;

  // Users that are never removed but by a factory reset.
  void MakeStableUsers();
  // A step of one or more operations, chosen by `number`; `own` is a user that no other thread
  // touches.
  void Step(unsigned number, const std::string& own);
  // Calls the operation of that name on the console.
  gateway::Answer Do(const std::string& name, const Words& words);

 protected:
  // Every call of an operation goes through here.
  virtual void Call(const gateway::Operation& operation, const Words& words,
                    gateway::Answer* answer);

 private:
  void BefriendByCloud(const std::string& uuid);
  void BefriendByMessage(const std::string& user, const std::string& uuid);
  void ReadSomething(unsigned number, const std::string& user);
  std::string StableUser(unsigned number) const;
  std::string AnySession(unsigned number);

  AccountManager& accounts_;
  const unsigned stable_users_;
  const CodeSource issue_code_;
  const std::string peer_id_;
  // A creation that a factory reset crosses may find the table empty, and then writes the network
  // strings, which have no lock. So creations share this one, and a reset has it alone. A reset
  // that waits holds the entrance, or creations would keep it out for ever.
  std::mutex entrance_;
  std::shared_mutex reset_mutex_;
  std::mutex mutex_;
  size_t opened_ = 0;
  std::vector<std::string> session_ids_;  // of the latest sign-ins
};

}  // namespace soak

#endif  // QORN_BENCH_RANDOM_STEPS_H_
