// What many users, sessions or invitations add to the resident memory: memory_probe user|session|
// candidate prints the bytes for each of them and the bytes of their texts and numbers.
#include <cstdio>
#include <optional>

#include "base/logging.h"
#include "bench/home.h"
#include "bench/service.h"
#include "bench/stored_users.h"
#include "core_fw/account/src/account_log.h"
#include "core_fw/account/src/session_table.h"

namespace bench {
namespace {

constexpr long kCount = 50000;

// Each adds one and gives the size of its own data.

std::size_t ReadUser(AccountManager& accounts, long number) {
  const account::UserInfo user = UserNumber(number);
  account::UserInfo read;
  std::string state;
  accounts.GetUserInformation(user.userUuid, &read.userId, &read.userName, &state, &read.userGuid,
                              &read.accessToken, &read.refreshToken, &read.registeredDate,
                              &read.lastSignInDate, &read.lastInfoChangedDate);
  return user.userUuid.size() + user.userId.size() + user.userName.size() + user.userGuid.size() +
         user.accessToken.size() + user.refreshToken.size() + user.registeredDate.size() +
         user.lastSignInDate.size() + user.lastInfoChangedDate.size();
}

std::size_t OpenSession(AccountManager& /*accounts*/, long number) {
  const std::string user_id = UserNumber(number % 50).userId;
  std::string session_id;
  account::SessionTable::GetInstance()->AddSession(user_id, &session_id);
  return session_id.size() + user_id.size() + sizeof(int);
}

std::size_t Invite(AccountManager& accounts, long number) {
  const std::string user_uuid = UserNumber(number).userUuid;
  const account::FriendInfo invited = FriendNumber(number, number % 1000);
  std::string code;
  accounts.AddFriendCandidate(user_uuid, invited.friendId, invited.friendQorDevicePeerId, &code);
  return user_uuid.size() + invited.friendId.size() + invited.friendQorDevicePeerId.size() +
         code.size();
}

void Measure(const std::string& what) {
  Home home;
  account::SetComponentLogLevel(logging::LOG_ERROR);
  {
    RawDatabase database(home.database_path());
    database.Run(kCreateUsers);
    database.Run(kCreateFriends);
    if (what == "user") Fill(database, kCount, 0);
  }
  Service service;
  const auto add = what == "user" ? &ReadUser : what == "session" ? &OpenSession : &Invite;
  add(service.accounts(), 0);
  const long before = ResidentBytes();
  std::size_t own = 0;
  for (long i = 1; i <= kCount; ++i) own += add(service.accounts(), i);
  std::printf("%.1f %.1f\n", static_cast<double>(ResidentBytes() - before) / kCount,
              static_cast<double>(own) / kCount);
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  if (argc != 2) bench::Die("memory_probe user|session|candidate");
  bench::Measure(argv[1]);
  return 0;
}
