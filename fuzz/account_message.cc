// Account messages as they come in and go out, and the JSON under them.
#include "core_fw/account/src/account_message.h"

#include <algorithm>

#include "base/json_reader.h"
#include "base/json_writer.h"
#include "fuzz/fuzz.h"

namespace account {
namespace {

// A composed text in the form that is read: its parameters in an array.
std::string AsIncoming(std::string text) {
  const std::string list = "\"param_list\":{";
  // The key stands behind two fixed members, so the first one found is no value.
  text.insert(text.find(list) + list.size() - 1, "[");
  text.insert(text.size() - 1, "]");
  return text;
}

void CheckJson(const std::string& text) {
  const std::unique_ptr<base::Value> value = base::JSONReader::Read(text);
  if (value == nullptr) return;
  std::string written, again;
  fuzz::Require(base::JSONWriter::Write(*value, &written), "what was read can be written");
  const std::unique_ptr<base::Value> read = base::JSONReader::Read(written);
  fuzz::Require(read != nullptr && base::JSONWriter::Write(*read, &again) && again == written,
                "what was written reads the same");
}

void CheckComposed(const FriendMessage& sent, MessageKind kind) {
  const bool add = kind == MessageKind::kAddFriend;
  const std::string text = add ? ComposeAddFriendMessage(sent) : ComposeRemoveFriendMessage(sent);
  FriendMessage got;
  fuzz::Require(ParseFriendMessage(AsIncoming(text), &got) == kind, "a composed message is read");
  const std::string again = add ? ComposeAddFriendMessage(got) : ComposeRemoveFriendMessage(got);
  fuzz::Require(text == again, "a composed message reads the same");
}

void Run(const std::string& input) {
  CheckJson(input);
  FriendMessage message;
  const MessageKind kind = ParseFriendMessage(input, &message);
  if (kind == MessageKind::kAddFriend || kind == MessageKind::kRemoveFriend) {
    CheckComposed(message, kind);
  } else {
    fuzz::Require(message.user_id.empty(), "what is no message leaves the output");
  }
  // Any bytes as values, no UTF-8 among them. Few: writing and reading them takes most of the time.
  const std::string some = input.substr(0, 64);
  const std::string part = some.substr(0, some.find('\n'));
  CheckComposed({part, some, "g", part, some, part}, MessageKind::kAddFriend);
}

}  // namespace
}  // namespace account

void fuzz::Run(const std::string& input) { account::Run(input); }
