#include "gateway/console/commands.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace gateway {
namespace {

struct Pair {
  const char* name;
  const char* text;
};

constexpr Pair kAliases[] = {
    {"CreateUser", "create"},
    {"RemoveUser", "remove"},
    {"GetUserUUIDFromUserID", "uuid"},
    {"GetFriendUUIDFromFriendIDAndFriendPeerID", "friend-uuid"},
    {"SignIn", "in"},
    {"SignInAlt", "in-alt"},
    {"SignOut", "out"},
    {"GetAllUsersUUID", "uuids"},
    {"GetUserInfoByType", "get"},
    {"SetUserInfoByType", "change"},
    {"GetUserInformation", "info"},
    {"AddFriendCandidate", "invite"},
    {"AddFriendRequest", "accept"},
    {"RemoveFriendRequest", "unfriend"},
    {"GetFriendInformation", "friend"},
    {"GetSessionInfo", "session"},
    {"CheckSessionValidation", "check"},
    {"ResetCountForSessionMaintenance", "keep"},
    {"GetSessionLifetime", "lifetime"},
    {"GetNTSServerInfoAndPeerID", "network"},
    {"ParseAccountMessage", "message"},
    {"RefreshAccessToken", "refresh"},
};

// Usage lines would not fit beside the help with these names in full.
constexpr Pair kShortNames[] = {
    {"auth_code", "CODE"},
    {"oauth_auth_code", "CODE"},
    {"friend_device_physical_address_text", "FRIEND_DEVICE_ADDRESS"},
};

// What only somebody at the console wants to know of an argument.
constexpr Pair kHints[] = {
    {"user_uuid", ", from create-user, users or get-user-uuid-from-user-id"},
    {"session_id", ", from sign-in or status"},
    {"friend_uuid", ", from friends or get-all-friends-uuid"},
    {"friend_auth_code", ", from add-friend-candidate"},
    {"message", ", in single quotes"},
};

template <size_t kCount>
std::string Find(const Pair (&pairs)[kCount], const std::string& name) {
  for (const Pair& pair : pairs) {
    if (name == pair.name) return pair.text;
  }
  return "";
}

std::string ShownName(const std::string& name) {
  std::string shown = Find(kShortNames, name);
  if (!shown.empty()) return shown;
  std::transform(name.begin(), name.end(), std::back_inserter(shown),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return shown;
}

// "GetUserUUIDFromUserID" is "get-user-uuid-from-user-id": a word begins at a capital that follows
// a small letter, and at the last of several capitals that a small letter follows.
std::string KebabCase(const std::string& name) {
  std::string kebab;
  for (size_t i = 0; i < name.size(); ++i) {
    const bool capital = std::isupper(static_cast<unsigned char>(name[i])) != 0;
    const bool after_small = i > 0 && std::islower(static_cast<unsigned char>(name[i - 1])) != 0;
    const bool before_small =
        i + 1 < name.size() && std::islower(static_cast<unsigned char>(name[i + 1])) != 0;
    if (capital && i > 0 && (after_small || before_small)) kebab += '-';
    kebab += static_cast<char>(std::tolower(static_cast<unsigned char>(name[i])));
  }
  return kebab;
}

Command MakeCommand(const Operation& operation) {
  return {.name = KebabCase(operation.name),
          .alias = Find(kAliases, operation.name),
          .group = operation.group,
          .arguments = {operation.arguments.begin(), operation.arguments.end()},
          .help = operation.help,
          .results = operation.results};
}

}  // namespace

CommandArgument::CommandArgument(std::string name, std::string text, IdKind id_kind,
                                 Secrecy secrecy)
    : usage(std::move(name)),
      meaning(std::move(text)),
      kind(id_kind),
      secret(secrecy == Secrecy::kSecret) {}

CommandArgument::CommandArgument(const Parameter& parameter)
    : usage(ShownName(parameter.name)),
      meaning(parameter.meaning + Find(kHints, parameter.name)),
      kind(parameter.kind),
      secret(parameter.secret) {}

CommandArgument CommandArgument::Optional() const {
  CommandArgument optional = *this;
  optional.usage = "[" + usage + "]";
  return optional;
}

bool Command::IsCalled(const std::string& word) const {
  return word == name || (word == alias && !alias.empty());
}

bool Command::Accepts(size_t argument_count) const {
  if (arguments.empty()) return argument_count == 0;
  const bool last_may_be_missing = arguments.back().is_optional();
  if (argument_count + (last_may_be_missing ? 1 : 0) < arguments.size()) return false;
  return argument_count <= arguments.size() || arguments.back().is_repeated();
}

std::string UsageOf(const Command& command) {
  std::string usage;
  for (const CommandArgument& argument : command.arguments) {
    usage += (usage.empty() ? "" : " ") + argument.usage;
  }
  return usage;
}

const std::vector<Command>& OperationCommands() {
  static const std::vector<Command> commands = [] {
    std::vector<Command> made;
    for (const Operation& operation : Operations()) made.push_back(MakeCommand(operation));
    return made;
  }();
  return commands;
}

const Operation* FindCommandOperation(const std::string& word) {
  const std::vector<Command>& commands = OperationCommands();
  for (size_t i = 0; i < commands.size(); ++i) {
    if (commands[i].IsCalled(word)) return &Operations()[i];
  }
  return nullptr;
}

}  // namespace gateway
