// Texts that other programs read and no scenario shows.
#include <gtest/gtest.h>

#include "core_fw/account/src/account_message.h"
#include "core_fw/account/src/account_result.h"
#include "core_fw/account/src/identifiers.h"
#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

// The other kinds are in the scenarios.
TEST(Identifiers, AUuidOfNoKindBeginsWithZero) {
  for (const int kind : {-1, 0, 5}) EXPECT_EQ(MakeUuid(kind)[0], '0') << kind;
}

TEST(AccountResult, MessagesAreFixed) {
  for (int code = -1; code <= 20; ++code) EXPECT_EQ(AccountResultToString(code), Message(code));
}

TEST(AccountMessage, ComposedTextsAreFixed) {
  const FriendMessage message{"bob@x", "ann \"A\"\n@x", "guid-1", "Hom\xc3\xa9", "AABBCC", "p-1"};
  EXPECT_EQ(ComposeAddFriendMessage(message),
            "{\"api_name\":\"AddFriend\",\"module_name\":\"account\",\"param_list\":{"
            "\"friend_guid\":\"guid-1\",\"friend_id\":\"ann \\\"A\\\"\\n@x\","
            "\"friend_qor_device_name\":\"Hom\xc3\xa9\","
            "\"friend_qor_device_peer_id\":\"p-1\","
            "\"friend_qor_device_physical_address_text\":\"AABBCC\","
            "\"user_id\":\"bob@x\"}}");
  EXPECT_EQ(ComposeRemoveFriendMessage(message),
            "{\"api_name\":\"RemoveFriend\",\"module_name\":\"account\",\"param_list\":{"
            "\"friend_id\":\"ann \\\"A\\\"\\n@x\",\"friend_qor_device_peer_id\":\"p-1\","
            "\"user_id\":\"bob@x\"}}");
}

}  // namespace
}  // namespace account
