// A component with the account interface, without cloud or store.
#include <fstream>
#include <iterator>
#include <thread>

#include "core_fw/runtime/component.h"
#include "gateway/tests/fake_account_manager.h"

namespace {

// Returns once the writer of the named pipe has closed it.
void WaitForPipe(const std::string& pipe) {
  std::ifstream input(pipe);
  std::string(std::istreambuf_iterator<char>(input), {});
}

class Accounts : public gateway::FakeAccountManager {
 public:
  ~Accounts() override {
    if (worker_.joinable()) worker_.join();
  }

  // Publishes what the real operation publishes.
  AccountResult CreateUser(Text user_id, Text code, Out user_uuid) override {
    const AccountResult answer = FakeAccountManager::CreateUser(user_id, code, user_uuid);
    gateway::Publish(kEventAccountCreateUser, {*user_uuid, user_id, code});
    return answer;
  }

  // A long operation.
  AccountResult SearchUser(Text pipe, Text) override {
    WaitForPipe(pipe);
    return kAccountSuccess;
  }

  // Returns at once; a session ends by itself when the pipe is closed.
  AccountResult SignOut(Text pipe) override {
    worker_ = std::thread([pipe] {
      WaitForPipe(pipe);
      gateway::Publish(kEventAccountSignOut, {"user", "id", "ended"});
    });
    return kAccountSuccess;
  }

 private:
  std::thread worker_;
};

class FakeComponent : public Component {
 public:
  bool QueryInterface(const std::string& name, void** out) override {
    if (name != "account_interface") return false;
    *out = static_cast<AccountManager*>(&accounts_);
    return true;
  }
  bool Finalize() override { return true; }

 private:
  Accounts accounts_;
};

}  // namespace

extern "C" Component* GetComponent() { return new FakeComponent(); }
