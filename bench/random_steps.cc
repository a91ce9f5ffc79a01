#include "bench/random_steps.h"

#include <utility>

namespace soak {
namespace {

constexpr size_t kKnownSessions = 1000;

}  // namespace

std::string Output(const gateway::Answer& answer, const std::string& name) {
  for (const gateway::Field& output : answer.outputs) {
    if (output.name == name && !output.values.empty()) return output.values.front();
  }
  return "";
}

RandomSteps::RandomSteps(AccountManager& accounts, unsigned stable_users, CodeSource issue_code,
                         std::string peer_id)
    : accounts_(accounts),
      stable_users_(stable_users),
      issue_code_(std::move(issue_code)),
      peer_id_(std::move(peer_id)) {}

void RandomSteps::MakeStableUsers() {
  for (unsigned i = 0; i < stable_users_; ++i) {
    Do("create-user", {StableUser(i), issue_code_(StableUser(i))});
  }
}

std::string RandomSteps::StableUser(unsigned number) const {
  return "stable" + std::to_string(number % stable_users_) + "@x";
}

std::string RandomSteps::AnySession(unsigned number) {
  const std::lock_guard<std::mutex> guard(mutex_);
  return session_ids_.empty() ? "none" : session_ids_[number % session_ids_.size()];
}

gateway::Answer RandomSteps::Do(const std::string& name, const Words& words) {
  gateway::Answer answer;
  Call(*gateway::FindCommandOperation(name), words, &answer);
  const std::string session = Output(answer, "session_id");
  if (session.empty()) return answer;
  const std::lock_guard<std::mutex> guard(mutex_);
  if (session_ids_.size() < kKnownSessions) session_ids_.emplace_back();
  session_ids_[opened_++ % kKnownSessions] = session;
  return answer;
}

void RandomSteps::Call(const gateway::Operation& operation, const Words& words,
                       gateway::Answer* answer) {
  const std::string name = operation.name;
  std::shared_lock<std::shared_mutex> creation(reset_mutex_, std::defer_lock);
  std::unique_lock<std::shared_mutex> reset(reset_mutex_, std::defer_lock);
  {
    std::unique_lock<std::mutex> entrance(entrance_, std::defer_lock);
    if (name == "CreateUser" || name == "DoFactoryReset") entrance.lock();
    if (name == "CreateUser") creation.lock();
    if (name == "DoFactoryReset") reset.lock();
  }
  std::string error;
  operation.Call(accounts_, words, answer, &error);
}

void RandomSteps::BefriendByCloud(const std::string& uuid) {
  const std::string code =
      Output(Do("add-friend-candidate", {uuid, "f@x", peer_id_}), "friend_auth_code");
  Do("add-friend-request", {"f@x", code, issue_code_("f@x"), "m", "d", "DDEEFF"});
}

void RandomSteps::BefriendByMessage(const std::string& user, const std::string& uuid) {
  Do("remove-friend-request", {uuid, "f@x", peer_id_});
  Do("add-friend-to-db", {uuid, "g@x", "g", "d", "a", "p"});
  Do("parse-account-message",
     {R"({"module_name":"account","api_name":"RemoveFriend","param_list":[{"user_id":")" + user +
      R"(","friend_id":"g@x","friend_qor_device_peer_id":"p"}]})"});
  Do("remove-friend-from-db", {uuid, "g@x", "p"});
}

void RandomSteps::ReadSomething(unsigned number, const std::string& user) {
  const std::string uuid = Output(Do("get-user-uuid-from-user-id", {user}), "user_uuid");
  const std::string session = AnySession(number);
  Do("get-user-info-by-type", {uuid, std::to_string(100 + number % 9)});
  Do("get-user-information", {uuid});
  Do("get-all-users-uuid", {});
  const std::string friend_uuid = Output(Do("get-all-friends-uuid", {uuid}), "friend_uuids");
  Do("get-friend-information", {friend_uuid});
  Do("get-friend-uuid-from-friend-id-and-friend-peer-id", {uuid, "f", "p"});
  Do("get-nts-server-info-and-peer-id", {});
  Do("get-network-setting-status", {});
  Do("get-session-info", {session});
  Do("check-session-validation", {session});
  Do("reset-count-for-session-maintenance", {session});
  Do("get-session-lifetime", {});
  for (const char* idle :
       {"create-user-request", "get-user-creation-request", "remove-user-request", "search-user"}) {
    Do(idle, {user, uuid});
  }
}

void RandomSteps::Step(unsigned number, const std::string& own) {
  const std::string user = StableUser(number >> 8);
  const bool odd = (number & 64) != 0;
  const auto uuid = [&] { return Output(Do("get-user-uuid-from-user-id", {user}), "user_uuid"); };
  switch (number % 12) {
    case 0:
      Do("create-user", {own, issue_code_(own)});
      break;
    case 1:
      Do("remove-user", {own, own});
      break;
    case 2:
      Do("sign-in", {user, issue_code_(user)});
      break;
    case 3:
    case 4:
      Do("sign-in-alt", {odd ? user : "qornsystem", "mivu5830"});
      break;
    case 5:
    case 6:
      Do("sign-out", {AnySession(number >> 4)});
      break;
    case 7:
      Do("set-user-info-by-type", {uuid(), odd ? "201" : "300", "Name"});
      Do("set-session-lifetime", {std::to_string(2 + (number >> 4 & 3))});
      break;
    case 8:
      Do("refresh-access-token", {user});
      break;
    case 9:
      BefriendByCloud(uuid());
      break;
    case 10:
      BefriendByMessage(user, uuid());
      break;
    default:
      ReadSomething(number >> 4, user);
  }
}

}  // namespace soak
