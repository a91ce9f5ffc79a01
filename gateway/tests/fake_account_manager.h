// An account interface that writes down how it was called.
#ifndef QORN_GATEWAY_TESTS_FAKE_ACCOUNT_MANAGER_H_
#define QORN_GATEWAY_TESTS_FAKE_ACCOUNT_MANAGER_H_

#include <string>
#include <vector>

#include "core_fw/account/include/account_manager.h"

#define FAKE(name, parameters, inputs, outputs) \
  AccountResult name parameters override { return Note(#name, Words inputs, Outs outputs); }

namespace gateway {

// Answers `result`, and on success writes the outputs: each text output is "o" and its number
// ("o1"), a list "l1" and "l2", a number 30. CheckSessionValidation answers the number that it was
// given; GetSessionInfo knows no session "2".
class FakeAccountManager : public AccountManager {
 public:
  using Text = const std::string&;
  using Out = std::string*;
  using List = std::vector<std::string>*;
  using Words = std::vector<std::string>;
  using Outs = std::vector<std::string*>;

  FAKE(CreateUser, (Text a, Text b, Out x), ({a, b}), ({x}))
  FAKE(CreateUserRequest, (Text a, Text b), ({a, b}), ())
  FAKE(GetUserCreationRequest, (Text a, Text b), ({a, b}), ())
  FAKE(RemoveUser, (Text a, Text b), ({a, b}), ())
  FAKE(RemoveUserRequest, (Text a, Text b), ({a, b}), ())
  FAKE(SearchUser, (Text a, Text b), ({a, b}), ())
  FAKE(GetUserUUIDFromUserID, (Text a, Out x), ({a}), ({x}))
  FAKE(GetFriendUUIDFromFriendIDAndFriendPeerID, (Text a, Text b, Text c, Out x), ({a, b, c}),
       ({x}))
  FAKE(SignInAlt, (Text a, Text b, Out x, Out y), ({a, b}), ({x, y}))
  FAKE(SignOut, (Text a), ({a}), ())
  FAKE(GetUserInfoByType, (Text a, int type, Out x), ({a, std::to_string(type)}), ({x}))
  FAKE(SetUserInfoByType, (Text a, int type, Text b), ({a, std::to_string(type), b}), ())
  FAKE(GetUserInformation, (Text a, Out x, Out y, Out z, Out t, Out u, Out v, Out w, Out p, Out q),
       ({a}), ({x, y, z, t, u, v, w, p, q}))
  FAKE(AddFriendToDB, (Text a, Text b, Text c, Text d, Text e, Text f, Out x), ({a, b, c, d, e, f}),
       ({x}))
  FAKE(AddFriendCandidate, (Text a, Text b, Text c, Out x), ({a, b, c}), ({x}))
  FAKE(AddFriendRequest, (Text a, Text b, Text c, Text d, Text e, Text f, Out x),
       ({a, b, c, d, e, f}), ({x}))
  FAKE(RemoveFriendFromDB, (Text a, Text b, Text c), ({a, b, c}), ())
  FAKE(RemoveFriendRequest, (Text a, Text b, Text c), ({a, b, c}), ())
  FAKE(GetFriendInformation, (Text a, Out x, Out y, Out z, Out t, Out u, Out v), ({a}),
       ({x, y, z, t, u, v}))
  FAKE(DoFactoryReset, (), (), ())
  FAKE(ResetCountForSessionMaintenance, (Text a), ({a}), ())
  FAKE(SetSessionLifetime, (int lifetime), ({std::to_string(lifetime)}), ())
  FAKE(GetNTSServerInfoAndPeerID, (Out x, Out y, Out z, Out t, Out u, Out v), (),
       ({x, y, z, t, u, v}))
  FAKE(ParseAccountMessage, (Text a), ({a}), ())
  FAKE(RefreshAccessToken, (Text a), ({a}), ())

  AccountResult SignIn(Text a, Text b, Out x, Out y, bool* failed) override {
    *failed = result == kAccountZepServerFailure;
    return Note("SignIn", {a, b}, {x, y});
  }
  AccountResult GetAllUsersUUID(List list) override {
    *list = {"l1", "l2"};
    return Note("GetAllUsersUUID", {}, {});
  }
  AccountResult GetAllFriendsUUID(Text a, List list) override {
    *list = {"l1", "l2"};
    return Note("GetAllFriendsUUID", {a}, {});
  }
  AccountResult GetSessionInfo(Text a, Out x) override {
    const AccountResult answer = Note("GetSessionInfo", {a}, {x});
    return a == "2" ? kAccountInvalidSessionId : answer;
  }
  AccountResult CheckSessionValidation(Text a) override {
    Note("CheckSessionValidation", {a}, {});
    return std::stoi(a);
  }
  AccountResult GetSessionLifetime(int* lifetime) override {
    *lifetime = 30;
    return Note("GetSessionLifetime", {}, {});
  }
  int GetNetworkSettingStatus() override {
    Note("GetNetworkSettingStatus", {}, {});
    return network_polls_left > 0 ? (--network_polls_left, 0) : 1;
  }

  AccountResult result = kAccountSuccess;
  int network_polls_left = 0;  // how often the network setting status is still 0
  std::string output_text = "o";
  std::vector<std::string> calls;  // "SignIn(alice,code)"

 private:
  AccountResult Note(const std::string& name, const Words& inputs, const Outs& outputs) {
    std::string call = name + "(";
    for (const std::string& input : inputs) call += input + ",";
    if (!inputs.empty()) call.pop_back();
    calls.push_back(call + ")");
    if (result != kAccountSuccess) return result;
    for (size_t i = 0; i < outputs.size(); ++i) *outputs[i] = output_text + std::to_string(i + 1);
    return result;
  }
};

}  // namespace gateway

#undef FAKE

#endif  // QORN_GATEWAY_TESTS_FAKE_ACCOUNT_MANAGER_H_
