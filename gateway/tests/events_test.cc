#include "gateway/events.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "core_fw/account/include/account_manager.h"
#include "evt/event_manager.h"
#include "gateway/tests/publish.h"

namespace gateway {
namespace {

void PublishAndWait(int type, const std::vector<std::string>& texts) {
  Publish(type, texts);
  evt::EventManager::GetInstance()->Flush();
}

// The lines with a blank instead of each line break.
std::string OneLine(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

TEST(EventPrinter, NamesThePayloadOfEachEvent) {
  const struct {
    int type;
    const char* name;
    const char* fields;
  } cases[] = {
      {1, "AddFriend",
       "user_uuid: text1   friend_uuid: text2   friend_id: text3   friend_peer_id: text4"},
      {2, "CreateUser", "user_uuid: text1   user_id: text2   code: text…"},
      {3, "RemoveFriend", "user_uuid: text1   friend_id: text2   friend_peer_id: text3"},
      {4, "RemoveUser", "user_uuid: text1   user_id: text2   requesting_user_id: text3"},
      {5, "SetUserInformation", "user_uuid: text1   user_id: text2   user_name: text3"},
      {6, "SignIn", "user_uuid: text1   user_id: text2   code: text…   session_id: text4"},
      {7, "SignInAlt", "user_uuid: text1   user_id: text2   session_id: text3"},
      {8, "SignOut", "user_uuid: text1   user_id: text2   session_id: text3"},
  };
  std::ostringstream out;
  Printer printer(out, out, false);
  EventPrinter events(&printer);
  for (const auto& c : cases) {
    out.str("");
    PublishAndWait(c.type, {"text1", "text2", "text3", "text4"});
    EXPECT_EQ(OneLine(out.str()),
              std::string("event kEventAccount") + c.name + "   " + c.fields + " ");
  }
}

TEST(EventPrinter, ShowsWhatAShortPayloadHasAndStopsWithItsLife) {
  std::ostringstream out;
  Printer printer(out, out, true);
  {
    EventPrinter events(&printer);
    PublishAndWait(kEventAccountCreateUser, {"only"});
  }
  PublishAndWait(kEventAccountCreateUser, {"unseen"});
  EXPECT_EQ(out.str(), "event kEventAccountCreateUser\n  user_uuid: only\n");
}

}  // namespace
}  // namespace gateway
