// Account messages: JSON texts about friendships that are exchanged with other modules.
#ifndef QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_MESSAGE_H_
#define QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_MESSAGE_H_

#include <string>

namespace account {

// The parameters of a message. "RemoveFriend" has only user_id, friend_id and device_peer_id.
struct FriendMessage {
  std::string user_id;
  std::string friend_id;
  std::string friend_guid;
  std::string device_name;
  std::string device_physical_address_text;
  std::string device_peer_id;
};

enum class MessageKind {
  kInvalid,         // Not a message for this component, or an incomplete one.
  kUnknownRequest,  // Well-formed, but neither of the two requests.
  kAddFriend,
  kRemoveFriend,
};

// Parses an incoming text; `message` is written for the last two kinds only. "param_list" is an
// array there, and only its first element is read.
MessageKind ParseFriendMessage(const std::string& text, FriendMessage* message);

// Compose outgoing texts. "param_list" is deliberately an object here, but an array in incoming
// texts.
std::string ComposeAddFriendMessage(const FriendMessage& message);
std::string ComposeRemoveFriendMessage(const FriendMessage& message);

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_MESSAGE_H_
