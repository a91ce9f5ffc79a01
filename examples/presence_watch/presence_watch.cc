// A component that tells in the log who is home: it listens to the account component's events,
// reads the user through the account interface and counts the open sessions.
#include <algorithm>
#include <map>
#include <new>
#include <string>
#include <vector>

#include "base/logging.h"
#include "base/pickle.h"
#include "core_fw/account/include/account_manager.h"
#include "core_fw/runtime/component.h"
#include "evt/event_manager.h"
#include "runtime/runtime.h"

namespace {

class PresenceWatch;
PresenceWatch* g_component = nullptr;  // Touched by the runtime's thread only.

class PresenceWatch : public Component {
 public:
  ~PresenceWatch() override { g_component = nullptr; }

  const char* GetName() override { return "presence_watch"; }

  // The account component is there if it was loaded before this one. Without it nothing was begun
  // and there is nothing to take back: the runtime does not finalize a component that did not
  // start.
  bool Start() override {
    void* found = nullptr;
    if (!runtime::Runtime::GetInstance()->QueryInterface("account_interface", &found)) return false;
    accounts_ = static_cast<AccountManager*>(found);
    for (int type : {kEventAccountSignIn, kEventAccountSignInAlt, kEventAccountSignOut}) {
      listeners_.push_back(evt::EventManager::GetInstance()->AddListener(
          type, [this](int heard, const Pickle& data) { Hear(heard, data); }));
    }
    return true;
  }

  // Components are finalized in the reverse order of loading, so the account component still works
  // for a call that is under way; RemoveListener waits for its end.
  bool Finalize() override {
    for (int listener : listeners_) evt::EventManager::GetInstance()->RemoveListener(listener);
    listeners_.clear();
    return true;
  }

 private:
  // On the bus's thread, which no exception may reach.
  void Hear(int type, const Pickle& data) {
    try {
      PickleIterator payload(data);
      std::string user_uuid, skipped, session_id;
      if (!payload.ReadString(&user_uuid) || !payload.ReadString(&skipped)) return;  // user ID
      if (type == kEventAccountSignIn && !payload.ReadString(&skipped)) return;      // code
      if (!payload.ReadString(&session_id)) return;
      if (type == kEventAccountSignOut) {
        sessions_.erase(session_id);  // Asking below would put a failure in the log.
      } else {
        sessions_[session_id] = user_uuid;
      }
      Report(user_uuid);
    } catch (...) {  // Memory ended; the line is lost.
    }
  }

  void Report(const std::string& user_uuid) {
    // A factory reset ends sessions without an event.
    std::erase_if(sessions_, [this](const auto& session) {
      return accounts_->CheckSessionValidation(session.first) != kAccountSuccess;
    });
    const auto count = std::count_if(sessions_.begin(), sessions_.end(), [&](const auto& session) {
      return session.second == user_uuid;
    });
    // Read now, not from the event: the user may have a new ID by now, or be gone.
    std::string user_id;
    if (accounts_->GetUserInfoByType(user_uuid, kUserInfoGetUserId, &user_id) != kAccountSuccess) {
      return;
    }
    if (logging::GetMinLogLevel() > logging::LOG_INFO) return;
    logging::LogMessage(__FILE__, __LINE__, logging::LOG_INFO).stream()
        << "presence: " << user_id << (count == 0 ? " has left (" : " is home (") << count
        << (count == 1 ? " session)" : " sessions)");
  }

  AccountManager* accounts_ = nullptr;  // Borrowed until Finalize returns.
  std::vector<int> listeners_;
  std::map<std::string, std::string> sessions_;  // The user's UUID by session ID; the bus's thread.
};

}  // namespace

// The runtime deletes the component, and sees by the pointer that the library is loaded already.
extern "C" __attribute__((visibility("default"))) Component* GetComponent();

Component* GetComponent() {
  if (g_component == nullptr) g_component = new (std::nothrow) PresenceWatch;
  return g_component;
}
