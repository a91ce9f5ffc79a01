#include "core_fw/account/src/account_message.h"

#include <initializer_list>
#include <memory>
#include <utility>

#include "base/json_reader.h"
#include "base/json_writer.h"
#include "base/values.h"

namespace account {
namespace {

constexpr char kUserId[] = "user_id";
constexpr char kFriendId[] = "friend_id";
constexpr char kFriendGuid[] = "friend_guid";
constexpr char kDeviceName[] = "friend_qor_device_name";
constexpr char kDeviceAddress[] = "friend_qor_device_physical_address_text";
constexpr char kDevicePeerId[] = "friend_qor_device_peer_id";

using Parameters = std::initializer_list<std::pair<const char*, std::string*>>;

bool ReadParameters(const base::ListValue& list, Parameters parameters) {
  // A list without elements has no first one, and so lacks a parameter.
  const base::DictionaryValue* first = nullptr;
  if (!list.GetDictionary(0, &first)) return false;
  for (const auto& [key, value] : parameters) {
    if (!first->GetString(key, value)) return false;
  }
  return true;
}

std::string Compose(const char* request,
                    std::initializer_list<std::pair<const char*, const std::string*>> parameters) {
  auto list = std::make_unique<base::DictionaryValue>();
  for (const auto& [key, value] : parameters) list->SetString(key, *value);
  base::DictionaryValue message;
  message.SetString("module_name", "account");
  message.SetString("api_name", request);
  message.Set("param_list", std::move(list));
  std::string text;
  base::JSONWriter::Write(message, &text);
  return text;
}

}  // namespace

MessageKind ParseFriendMessage(const std::string& text, FriendMessage* message) {
  if (text.empty()) return MessageKind::kInvalid;
  // `list` below points into this document, which must outlive it.
  const std::unique_ptr<base::Value> value = base::JSONReader::Read(text);
  const base::DictionaryValue* envelope = nullptr;
  if (value == nullptr || !value->GetAsDictionary(&envelope)) return MessageKind::kInvalid;
  std::string module;
  std::string request;
  const base::ListValue* list = nullptr;
  if (!envelope->GetString("module_name", &module) || !envelope->GetString("api_name", &request) ||
      !envelope->GetList("param_list", &list)) {
    return MessageKind::kInvalid;
  }
  if (module != "account") return MessageKind::kInvalid;

  // Read into a local record, so that `message` is untouched if a parameter is missing.
  FriendMessage read;
  MessageKind kind = MessageKind::kUnknownRequest;
  if (request == "AddFriend") {
    kind = ReadParameters(*list, {{kUserId, &read.user_id},
                                  {kFriendId, &read.friend_id},
                                  {kFriendGuid, &read.friend_guid},
                                  {kDeviceName, &read.device_name},
                                  {kDeviceAddress, &read.device_physical_address_text},
                                  {kDevicePeerId, &read.device_peer_id}})
               ? MessageKind::kAddFriend
               : MessageKind::kInvalid;
  } else if (request == "RemoveFriend") {
    kind = ReadParameters(*list, {{kUserId, &read.user_id},
                                  {kFriendId, &read.friend_id},
                                  {kDevicePeerId, &read.device_peer_id}})
               ? MessageKind::kRemoveFriend
               : MessageKind::kInvalid;
  }
  if (kind == MessageKind::kAddFriend || kind == MessageKind::kRemoveFriend) {
    *message = std::move(read);
  }
  return kind;
}

std::string ComposeAddFriendMessage(const FriendMessage& message) {
  return Compose("AddFriend", {{kUserId, &message.user_id},
                               {kFriendId, &message.friend_id},
                               {kFriendGuid, &message.friend_guid},
                               {kDeviceName, &message.device_name},
                               {kDeviceAddress, &message.device_physical_address_text},
                               {kDevicePeerId, &message.device_peer_id}});
}

std::string ComposeRemoveFriendMessage(const FriendMessage& message) {
  return Compose("RemoveFriend", {{kUserId, &message.user_id},
                                  {kFriendId, &message.friend_id},
                                  {kDevicePeerId, &message.device_peer_id}});
}

}  // namespace account
