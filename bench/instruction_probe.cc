// One kind of call, many times, for a tool that counts instructions:
// instruction_probe check|lookup|parse COUNT. Two counts give the instructions of one call without
// those of the start.
#include <cstdlib>

#include "base/logging.h"
#include "bench/home.h"
#include "bench/service.h"
#include "bench/stored_users.h"
#include "core_fw/account/src/account_log.h"
#include "core_fw/account/src/account_message.h"
#include "core_fw/account/src/session_table.h"

namespace bench {
namespace {

constexpr char kMessage[] =
    R"({"module_name":"account","api_name":"RemoveFriend","param_list":[{"user_id":"ann@example.com",)"
    R"("friend_id":"bob@example.com","friend_qor_device_peer_id":"PEER-02-00-5E-10-00-02"}]})";

void Repeat(const std::string& what, long count) {
  Home home;
  account::SetComponentLogLevel(logging::LOG_ERROR);
  Service service;
  {
    RawDatabase database(home.database_path());
    Fill(database, 10, 0);
  }
  std::string session_id, uuid;
  account::SessionTable::GetInstance()->AddSession("ann@example.com", &session_id);
  const std::string user_id = UserNumber(5).userId;
  const std::string message = kMessage;
  account::FriendMessage parsed;
  for (long i = 0; i < count; ++i) {
    if (what == "check") service.accounts().CheckSessionValidation(session_id);
    if (what == "lookup") service.accounts().GetUserUUIDFromUserID(user_id, &uuid);
    if (what == "parse") account::ParseFriendMessage(message, &parsed);
  }
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  if (argc != 3) bench::Die("instruction_probe check|lookup|parse COUNT");
  bench::Repeat(argv[1], std::atol(argv[2]));
  return 0;
}
