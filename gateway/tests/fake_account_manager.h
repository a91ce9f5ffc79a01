// An account interface that writes down how it was called, and events as a component publishes
// them.
#ifndef QORN_GATEWAY_TESTS_FAKE_ACCOUNT_MANAGER_H_
#define QORN_GATEWAY_TESTS_FAKE_ACCOUNT_MANAGER_H_

#include <string>
#include <vector>

#include "base/pickle.h"
#include "core_fw/account/include/account_manager.h"
#include "evt/event_manager.h"

#define FAKE(name, parameters, ...) \
  AccountResult name parameters override { return Note(#name, __VA_ARGS__); }

namespace gateway {

// Answers `result`, and on success writes the text outputs: "o" and their number ("o1"). A list is
// "l1" and "l2", a number 30. CheckSessionValidation answers the number that it was given;
// GetSessionInfo knows no session "2".
class FakeAccountManager : public AccountManager {
 public:
  using Text = const std::string&;
  using Out = std::string*;
  using List = std::vector<std::string>*;

  FAKE(CreateUser, (Text a, Text b, Out x), a, b, x)
  FAKE(CreateUserRequest, (Text a, Text b), a, b)
  FAKE(GetUserCreationRequest, (Text a, Text b), a, b)
  FAKE(RemoveUser, (Text a, Text b), a, b)
  FAKE(RemoveUserRequest, (Text a, Text b), a, b)
  FAKE(SearchUser, (Text a, Text b), a, b)
  FAKE(GetUserUUIDFromUserID, (Text a, Out x), a, x)
  FAKE(GetFriendUUIDFromFriendIDAndFriendPeerID, (Text a, Text b, Text c, Out x), a, b, c, x)
  FAKE(SignIn, (Text a, Text b, Out x, Out y, bool* failed), a, b, x, y, failed)
  FAKE(SignInAlt, (Text a, Text b, Out x, Out y), a, b, x, y)
  FAKE(SignOut, (Text a), a)
  FAKE(GetAllUsersUUID, (List x), x)
  FAKE(GetUserInfoByType, (Text a, int type, Out x), a, type, x)
  FAKE(SetUserInfoByType, (Text a, int type, Text b), a, type, b)
  FAKE(GetUserInformation, (Text a, Out x, Out y, Out z, Out t, Out u, Out v, Out w, Out p, Out q),
       a, x, y, z, t, u, v, w, p, q)
  FAKE(AddFriendToDB, (Text a, Text b, Text c, Text d, Text e, Text f, Out x), a, b, c, d, e, f, x)
  FAKE(AddFriendCandidate, (Text a, Text b, Text c, Out x), a, b, c, x)
  FAKE(AddFriendRequest, (Text a, Text b, Text c, Text d, Text e, Text f, Out x), a, b, c, d, e, f,
       x)
  FAKE(RemoveFriendFromDB, (Text a, Text b, Text c), a, b, c)
  FAKE(RemoveFriendRequest, (Text a, Text b, Text c), a, b, c)
  FAKE(GetAllFriendsUUID, (Text a, List x), a, x)
  FAKE(GetFriendInformation, (Text a, Out x, Out y, Out z, Out t, Out u, Out v), a, x, y, z, t, u,
       v)
  FAKE(ResetCountForSessionMaintenance, (Text a), a)
  FAKE(GetSessionLifetime, (int* lifetime), lifetime)
  FAKE(SetSessionLifetime, (int lifetime), lifetime)
  FAKE(GetNTSServerInfoAndPeerID, (Out x, Out y, Out z, Out t, Out u, Out v), x, y, z, t, u, v)
  FAKE(ParseAccountMessage, (Text a), a)
  FAKE(RefreshAccessToken, (Text a), a)

  AccountResult DoFactoryReset() override { return Note("DoFactoryReset"); }
  AccountResult GetSessionInfo(Text a, Out x) override {
    const AccountResult answer = Note("GetSessionInfo", a, x);
    return a == "2" ? kAccountInvalidSessionId : answer;
  }
  AccountResult CheckSessionValidation(Text a) override {
    Note("CheckSessionValidation", a);
    return std::stoi(a);
  }
  int GetNetworkSettingStatus() override {
    Note("GetNetworkSettingStatus");
    return network_polls_left > 0 ? (--network_polls_left, 0) : 1;
  }

  AccountResult result = kAccountSuccess;
  int network_polls_left = 0;  // how often the network setting status is still 0
  std::string output_text = "o";
  std::vector<std::string> calls;  // "SignIn(alice,code)"

 private:
  template <typename... Parameters>
  AccountResult Note(const std::string& name, const Parameters&... parameters) {
    inputs_.clear();
    outputs_ = 0;
    (Take(parameters), ...);
    calls.push_back(name + "(" + (inputs_.empty() ? "" : inputs_.substr(1)) + ")");
    return result;
  }
  void Take(const std::string& input) { inputs_ += "," + input; }
  void Take(int input) { Take(std::to_string(input)); }
  void Take(std::string* output) {
    if (result == kAccountSuccess) *output = output_text + std::to_string(++outputs_);
  }
  void Take(List output) { *output = {"l1", "l2"}; }
  void Take(int* output) { *output = 30; }
  void Take(bool* output) { *output = result == kAccountZepServerFailure; }

  std::string inputs_;
  int outputs_ = 0;
};

inline void Publish(int type, const std::vector<std::string>& texts) {
  Pickle payload;
  for (const std::string& text : texts) payload.WriteString(text);
  evt::EventManager* bus = evt::EventManager::GetInstance();
  evt::Event* event = bus->CreateEvent(type);
  event->SetData(payload);
  bus->Publish(event);
  bus->ReleaseEvent(event);
}

}  // namespace gateway

#undef FAKE

#endif  // QORN_GATEWAY_TESTS_FAKE_ACCOUNT_MANAGER_H_
