// Account messages: JSON texts about friendships, exchanged with other modules.
#ifndef QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_MESSAGE_H_
#define QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_MESSAGE_H_

#include <string>

namespace account {

// The parameters of a message. "RemoveFriend" has user_id, friend_id and device_peer_id alone.
struct FriendMessage {
  std::string user_id;
  std::string friend_id;
  std::string friend_guid;
  std::string device_name;
  std::string device_physical_address_text;
  std::string device_peer_id;
};

enum class MessageKind {
  kInvalid,         // Not a message for this component, or one that lacks something.
  kUnknownRequest,  // Well-formed, but neither of the two requests.
  kAddFriend,
  kRemoveFriend,
};

// Reads an incoming text; `message` is written for the last two kinds only. Its "param_list" is an
// array, of which the first element counts.
MessageKind ParseFriendMessage(const std::string& text, FriendMessage* message);

// Compose outgoing texts. Their "param_list" is deliberately an object, while an incoming one is an
// array.
std::string ComposeAddFriendMessage(const FriendMessage& message);
std::string ComposeRemoveFriendMessage(const FriendMessage& message);

}  // namespace account

#endif  // QORN_CORE_FW_ACCOUNT_SRC_ACCOUNT_MESSAGE_H_
