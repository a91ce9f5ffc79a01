// Friends: invitation, completion, removal, and the messages of other modules.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {

using devcloud::Fault;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kToken[] = "/token";
constexpr char kAdd[] = "/device/adduserdevice";
constexpr char kDelete[] = "/device/deleteuserdevice";
constexpr char kDevices[] = "/device/getuserdevice";

class FriendsTest : public ServiceTest {
 protected:
  void SetUp() override {
    StartService();
    ann_ = MakeUser("ann@x");
    peer_ = cloud_->PeerId(kGatewayAddress);
    log_.Take();
  }

  std::string Invite(const std::string& friend_id, const std::string& peer_id) {
    std::string code;
    EXPECT_EQ(service_->AddFriendCandidate(ann_, friend_id, peer_id, &code), 1);
    EXPECT_THAT(code, testing::MatchesRegex("4[0-9a-f]{7}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"));
    return code;
  }
  // The friend presents the code with a fresh code of its own account.
  AccountResult Complete(const std::string& friend_id, const std::string& code) {
    return service_->AddFriendRequest(friend_id, code, cloud_->IssueCode("bob@x"), "QG-2", "Away",
                                      "DDEEFF", &friend_uuid_);
  }
  std::vector<std::string> Targets() const {
    std::vector<std::string> targets;
    for (const auto& request : cloud_->requests()) targets.push_back(request.target);
    return targets;
  }
  std::vector<std::string> Friends() const {
    return Sql(
        "SELECT userUuid, friendId, friendName, friendGuid, friendQorDeviceName, "
        "friendQorDevicePhysicalAddressText, friendQorDevicePeerId FROM Friends");
  }
  void Refuse(const std::string& path) {
    Fault fault;
    fault.path = path;
    cloud_->AddFault(fault);
  }

  std::string ann_, peer_, friend_uuid_ = "untouched";
};

TEST_F(FriendsTest, AnInvitationIsCompletedAndUndone) {
  const std::string code = Invite("bob@x", peer_);
  EXPECT_EQ(Complete("bob@x", code), 1);
  const std::string bob = cloud_->UserGuid("bob@x");
  const std::string ann = cloud_->UserGuid("ann@x");
  EXPECT_THAT(Targets(), ElementsAre(kToken, kAdd, kDevices, kAdd));
  EXPECT_TRUE(cloud_->IsRegistered(bob, kGatewayAddress));
  EXPECT_TRUE(cloud_->IsRegistered(ann, "DDEEFF"));
  EXPECT_THAT(cloud_->requests().at(3).body,
              HasSubstr("<deviceTypeCode>HGW</deviceTypeCode><deviceModelID>QG-2</deviceModelID>"));
  EXPECT_THAT(Friends(), ElementsAre(ann_ + "|bob@x|bob|" + bob + "|Away|DDEEFF|" + peer_));
  EXPECT_EQ(friend_uuid_[0], '2');
  EXPECT_THAT(events_->Take(), ElementsAre("1 " + ann_ + "|" + friend_uuid_ + "|bob@x|" + peer_));
  EXPECT_THAT(log_.Take(),
              ElementsAre(Line(2, "AddFriendCandidate", "AddFriendCandidateStart"),
                          Line(2, "AddFriendCandidate", "AddFriendCandidateEndSuccess"),
                          Line(2, "AddFriendRequest", "AddFriendRequestStart"),
                          Line(2, "AddFriendToDB", "AddFriendToDBStart"),
                          Line(2, "AddFriendToDB", "kEventAccountAddFriend published\n"),
                          Line(2, "AddFriendToDB", "AddFriendToDBEndSuccess"),
                          Line(2, "AddFriendRequest", "AddFriendRequestEndSuccess")));

  std::string unused;
  EXPECT_EQ(service_->AddFriendCandidate(ann_, "bob@x", peer_, &unused), 14);
  EXPECT_EQ(service_->RemoveFriendRequest(ann_, "bob@x", "other peer"), 8);
  log_.Take();
  cloud_->ClearRequests();
  EXPECT_EQ(service_->RemoveFriendRequest(ann_, "bob@x", peer_), 1);
  EXPECT_THAT(Targets(), ElementsAre(kDelete, kDelete));
  EXPECT_FALSE(cloud_->IsRegistered(bob, kGatewayAddress));
  EXPECT_FALSE(cloud_->IsRegistered(ann, "DDEEFF"));
  EXPECT_TRUE(cloud_->IsRegistered(ann, kGatewayAddress));
  EXPECT_THAT(Friends(), IsEmpty());
  EXPECT_THAT(events_->Take(), ElementsAre("3 " + ann_ + "|bob@x|" + peer_));
  EXPECT_THAT(log_.Take(),
              ElementsAre(Line(2, "RemoveFriendRequest", "RemoveFriendRequestStart"),
                          Line(2, "RemoveFriendFromDB", "RemoveFriendFromDBStart"),
                          Line(2, "RemoveFriendFromDB", "RemoveFriendFromDBEndSuccess"),
                          Line(2, "RemoveFriendRequest", "RemoveFriendRequestEndSuccess")));
}

TEST_F(FriendsTest, CompletionFailsStepByStep) {
  EXPECT_EQ(Complete("bob@x", "unknown code"), 10);
  EXPECT_THAT(Targets(), IsEmpty());
  const std::string code = Invite("bob@x", peer_);
  const std::string elsewhere = Invite("bob@x", cloud_->PeerId("DDEEFF"));
  EXPECT_NE(code, elsewhere);
  Refuse(kToken);
  EXPECT_EQ(Complete("bob@x", code), 15);
  Refuse(kAdd);
  EXPECT_EQ(Complete("bob@x", code), 16);
  Refuse(kDevices);
  EXPECT_EQ(Complete("bob@x", code), 16);
  // The peer ID that the cloud reports is this gateway's: another one was invited.
  EXPECT_EQ(Complete("bob@x", elsewhere), 19);
  EXPECT_TRUE(cloud_->IsRegistered(cloud_->UserGuid("bob@x"), kGatewayAddress));  // Stays.
  Sql("DELETE FROM Users");
  EXPECT_EQ(Complete("bob@x", code), 6);
  EXPECT_EQ(friend_uuid_, "untouched");
  EXPECT_THAT(Friends(), IsEmpty());
  EXPECT_THAT(events_->Take(), IsEmpty());
  EXPECT_THAT(log_.Take(), testing::Contains(Line(4, "AddFriendRequest",
                                                  "AddFriendRequestEndThis friend auth code is not "
                                                  "vaild.")));
}

TEST_F(FriendsTest, TheSecondRegistrationMayFailToo) {
  const std::string code = Invite("bob@x", peer_);
  cloud_->ClearRequests();
  Sql("UPDATE Users SET accessToken='expired'");  // The owner's registration comes last.
  EXPECT_EQ(Complete("bob@x", code), 16);
  EXPECT_THAT(Targets(), ElementsAre(kToken, kAdd, kDevices, kAdd));
  EXPECT_THAT(Friends(), IsEmpty());
  log_.Take();
}

TEST_F(FriendsTest, OneCodeWorksAgainAndStoresTheIdThatIsGiven) {
  const std::string code = Invite("bob@x", peer_);
  EXPECT_EQ(Complete("given", code), 1);
  // The portal is told the candidate's ID, the row holds the given one.
  EXPECT_THAT(cloud_->requests().at(1).raw, HasSubstr("x-dpx-loginId: bob@x\r\n"));
  EXPECT_EQ(Sql("SELECT friendId, friendName FROM Friends").at(0), "given|DefaultFriendName");
  cloud_->ClearRequests();
  EXPECT_EQ(Complete("given", code), 14);
  EXPECT_THAT(Targets(), ElementsAre(kToken, kAdd, kDevices, kAdd));
  EXPECT_EQ(Complete("@other", code), 1);
  EXPECT_EQ(Sql("SELECT friendName FROM Friends WHERE friendId='@other'").at(0), "");
  events_->Take();
  log_.Take();
}

TEST_F(FriendsTest, RemovalFailsStepByStepAndKeepsTheFriend) {
  ASSERT_EQ(service_->AddFriendToDB(ann_, "f@x", "guid", "dev", "DDEEFF", "p", &friend_uuid_), 1);
  Refuse(kDelete);
  EXPECT_EQ(service_->RemoveFriendRequest(ann_, "f@x", "p"), 16);
  EXPECT_EQ(service_->RemoveFriendRequest(ann_, "nobody", "p"), 8);
  EXPECT_EQ(service_->RemoveFriendFromDB(ann_, "nobody", "p"), 8);
  Sql("DELETE FROM Users");
  EXPECT_EQ(service_->RemoveFriendRequest(ann_, "f@x", "p"), 6);
  EXPECT_EQ(Friends().size(), 1u);
  EXPECT_THAT(Targets(), ElementsAre(kDelete));
  events_->Take();
  log_.Take();
}

TEST_F(FriendsTest, ReadingBack) {
  ASSERT_EQ(service_->AddFriendToDB(ann_, "f@x", "guid", "dev", "addr", "p", &friend_uuid_), 1);
  std::array<std::string, 6> v;
  EXPECT_EQ(service_->GetFriendInformation(friend_uuid_, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5]),
            1);
  EXPECT_THAT(v, ElementsAre("f@x", "f", "guid", "dev", "addr", "p"));
  EXPECT_EQ(service_->GetFriendInformation("nobody", &v[0], &v[1], &v[2], &v[3], &v[4], &v[5]), 9);
  EXPECT_THAT(v, ElementsAre("f@x", "f", "guid", "dev", "addr", "p"));
  std::string found;
  EXPECT_EQ(service_->GetFriendUUIDFromFriendIDAndFriendPeerID(ann_, "f@x", "p", &found), 1);
  EXPECT_EQ(found, friend_uuid_);
  EXPECT_EQ(service_->GetFriendUUIDFromFriendIDAndFriendPeerID(ann_, "f@x", "q", &found), 8);
  std::vector<std::string> list{"kept"};
  EXPECT_EQ(service_->GetAllFriendsUUID(ann_, &list), 1);
  EXPECT_EQ(service_->GetAllFriendsUUID("nobody", &list), 1);
  EXPECT_THAT(list, ElementsAre("kept", friend_uuid_));
  events_->Take();
  log_.Take();
}

TEST_F(FriendsTest, EmptyAndHugeStringsAreStoredAsTheyAre) {
  const std::string huge(1 << 20, 'z');
  for (const std::string& text : {std::string(), huge}) {
    ASSERT_EQ(service_->AddFriendToDB(text, text, text, text, text, text, &friend_uuid_), 1);
    std::array<std::string, 6> v;
    ASSERT_EQ(
        service_->GetFriendInformation(friend_uuid_, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5]), 1);
    EXPECT_TRUE(v[0] == text && v[2] == text && v[3] == text && v[4] == text && v[5] == text);
    EXPECT_EQ(v[1], "DefaultFriendName");
    EXPECT_EQ(service_->RemoveFriendFromDB(text, text, text), 1);
  }
  events_->Take();
  // Through the cloud: a request head has its limit, a body has none.
  EXPECT_EQ(Complete("bob@x", huge), 10);
  const std::string code = Invite("bob@x", peer_);
  EXPECT_EQ(service_->AddFriendRequest("bob@x", code, huge, "m", "d", "a", &friend_uuid_), 15);
  EXPECT_EQ(Complete("bob@x", Invite(huge, peer_)), 16);
  EXPECT_EQ(service_->AddFriendRequest("bob@x", code, cloud_->IssueCode("bob@x"), huge, "d", huge,
                                       &friend_uuid_),
            1);
  log_.Take();
}

TEST_F(FriendsTest, MessagesOfOtherModules) {
  const auto add = [](const std::string& user_id) {
    return "{\"x\":1,\"module_name\":\"account\",\"api_name\":\"AddFriend\",\"param_list\":[{"
           "\"user_id\":\"" +
           user_id +
           "\",\"friend_id\":\"bob@x\",\"friend_guid\":\"g\",\"friend_qor_device_name\":\"d\","
           "\"friend_qor_device_physical_address_text\":\"a\",\"friend_qor_device_peer_id\":\"p\","
           "\"y\":2},{\"user_id\":\"ignored\"}]}";
  };
  const std::string remove =
      "{\"module_name\":\"account\",\"api_name\":\"RemoveFriend\",\"param_list\":[{\"user_id\":"
      "\"ann@x\",\"friend_id\":\"bob@x\",\"friend_qor_device_peer_id\":\"p\"}]}";
  const std::string kUnknownUser = "There is no user who has this user ID in the account DB";
  EXPECT_EQ(service_->ParseAccountMessage(add("nobody")), 5);
  EXPECT_THAT(log_.Take(), ElementsAre(Line(4, "ParseAccountMessage", kUnknownUser)));
  EXPECT_EQ(service_->ParseAccountMessage(add("ann@x")), 1);
  EXPECT_THAT(Friends(), ElementsAre(ann_ + "|bob@x|bob|g|d|a|p"));
  EXPECT_EQ(events_->Take().size(), 1u);
  EXPECT_THAT(log_.Take(),
              ElementsAre(Line(2, "AddFriendToDB", "AddFriendToDBStart"),
                          Line(2, "AddFriendToDB", "kEventAccountAddFriend published\n"),
                          Line(2, "AddFriendToDB", "AddFriendToDBEndSuccess"),
                          Line(2, "ParseAccountMessage", "Success")));
  EXPECT_EQ(service_->ParseAccountMessage(add("ann@x")), 14);
  EXPECT_EQ(log_.Take().back(),
            Line(4, "ParseAccountMessage", "Duplicated friend ID in the account DB"));
  EXPECT_EQ(service_->ParseAccountMessage(remove), 1);
  EXPECT_THAT(events_->Take(), ElementsAre("3 " + ann_ + "|bob@x|p"));
  EXPECT_EQ(log_.Take().back(), Line(2, "ParseAccountMessage", "Success"));
  EXPECT_EQ(service_->ParseAccountMessage(remove), 8);
  EXPECT_THAT(Friends(), IsEmpty());
  log_.Take();
}

TEST_F(FriendsTest, BrokenMessagesAreRefusedWithoutEffect) {
  const std::string six[] = {"user_id",
                             "friend_id",
                             "friend_guid",
                             "friend_qor_device_name",
                             "friend_qor_device_physical_address_text",
                             "friend_qor_device_peer_id"};
  const auto message = [](const std::string& module, const std::string& api,
                          const std::string& list) {
    return "{\"module_name\":" + module + ",\"api_name\":" + api + ",\"param_list\":" + list + "}";
  };
  const auto parameters = [&six](std::size_t without, const std::string& value) {
    std::string object = "{\"other\":0";
    for (std::size_t i = 0; i < std::size(six); ++i) {
      if (i != without) object += ",\"" + six[i] + "\":" + value;
    }
    return "[" + object + "}]";
  };
  const std::string account = "\"account\"";
  const std::string add = "\"AddFriend\"";
  const std::string good = message(account, add, parameters(6, "\"ann@x\""));
  std::vector<std::string> broken = {
      "", "not JSON", "7", "\"text\"", "[]", "null", "{}", good + "x", good + std::string(1, '\0'),
      "{\"module_name\":\"account\",\"api_name\":\"AddFriend\"}",
      "{\"module_name\":\"account\",\"param_list\":[]}",
      "{\"api_name\":\"AddFriend\",\"param_list\":[]}",
      message("\"Account\"", add, parameters(6, "\"ann@x\"")),
      message("1", add, parameters(6, "\"ann@x\"")),
      message(account, "[]", parameters(6, "\"ann@x\"")), message(account, add, "{}"),
      message(account, add, "[]"), message(account, add, "[[]]"),
      message(account, add, "[\"text\"]"), message(account, add, parameters(6, "1")),
      message(account, add, parameters(6, "\"\xff\"")),
      message(account, add, std::string(10000, '[') + std::string(10000, ']')),
      // Of two members with one name the last holds.
      good.substr(0, good.size() - 1) + ",\"module_name\":\"other\"}", std::string(1 << 20, 'x'),
      std::string(10000, '{')};
  for (std::size_t i = 0; i < std::size(six); ++i) {
    broken.push_back(message(account, add, parameters(i, "\"ann@x\"")));
    const bool needed = i < 2 || i == 5;
    if (needed) {
      broken.push_back(message(account, "\"RemoveFriend\"", parameters(i, "\"ann@x\"")));
    }
  }
  for (const std::string& text : broken) {
    EXPECT_EQ(service_->ParseAccountMessage(text), 19) << text.substr(0, 200);
    EXPECT_THAT(log_.Take(),
                ElementsAre(Line(4, "ParseAccountMessage", "Failure for certain reason")))
        << text.substr(0, 200);
  }
  // A well-formed message with a request that is not known is told at severity 2.
  for (const char* api : {"\"addfriend\"", "\"\"", "\"Other\""}) {
    EXPECT_EQ(service_->ParseAccountMessage(message(account, api, "[]")), 19);
    EXPECT_THAT(log_.Take(),
                ElementsAre(Line(2, "ParseAccountMessage", "Failure for certain reason")));
  }
  EXPECT_THAT(Friends(), IsEmpty());
  EXPECT_THAT(events_->Take(), IsEmpty());
}

}  // namespace
}  // namespace account
