// The six cloud requests as the server receives them, byte for byte.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "base/test_clock.h"
#include "base/time.h"
#include "core_fw/account/src/identifiers.h"
#include "core_fw/account/tests/test_support.h"

namespace account {
namespace {


class RequestsTest : public ServiceTest {
 protected:
  RequestsTest() {
    config_["account_device_physical_address_text"] = "AA<&>CC";
    config_["account_enable_MIRLO_network_setting"] = "on";
    cloud_->AddGateway("AA<&>CC");
    host_ = cloud_->http_url().substr(7);
  }

  // The request with what changes from one to the next replaced by names.
  std::string Request(std::size_t index) {
    std::string raw = cloud_->requests().at(index).raw;
    raw = std::regex_replace(raw, std::regex("oauth_timestamp=[0-9]{10},"), "oauth_timestamp=NOW,");
    raw = std::regex_replace(raw,
                             std::regex("oauth_nonce=5[0-9a-f]{7}(-[0-9a-f]{4}){3}-[0-9a-f]{12},"),
                             "oauth_nonce=NONCE,");
    return raw;
  }

  std::string TokenRequest(const std::string& body) const {
    return "POST /token HTTP/1.1\r\nHost: " + host_ + "\r\nAccept: application/json\r\n" +
           "Content-Length: " + std::to_string(body.size()) +
           "\r\nContent-Type: application/x-www-form-urlencoded\r\n\r\n" + body;
  }

  std::string PortalRequest(const std::string& path, const std::string& guid,
                            const std::string& login, const std::string& token,
                            const std::string& children) const {
    const std::string body =
        "<?xml version=\"1.0\" standalone=\"yes\"?><dpxDevice>" + children + "</dpxDevice>";
    return "POST " + path +
           " HTTP/1.1\r\nHost: portal.qorn.example\r\nAccept: */*\r\nx-dpx-appId: "
           "app-id\r\nx-dpx-version: v1\r\n"
           "x-dpx-userId: " +
           guid + "\r\nx-dpx-loginId: " + login +
           "\r\nx-dpx-authType: zep2 \r\nAuthorization: OAuth oauth_consumer_key=app-id, "
           "oauth_token=" +
           token +
           ", oauth_signature_method=_NONE_, oauth_signature=_NONE_, oauth_timestamp=NOW, "
           "oauth_nonce=NONCE, oauth_version=1.0\r\n"
           "Content-Type: text/xml\r\nContent-Length: " +
           std::to_string(body.size()) + "\r\n\r\n" + body;
  }

  std::string host_;
};

TEST_F(RequestsTest, NetworkSettingAsksInTheSystemAccountsName) {
  StartService();
  ASSERT_TRUE(cloud_->WaitForRequests(2));
  EXPECT_EQ(Request(0), PortalRequest("/device/getuserdevice", "qornsystem", "qornsystem", "",
                                      "<userId>qornsystem</userId><deviceTypeCode><deviceType>HGW"
                                      "</deviceType></deviceTypeCode>"));
  EXPECT_EQ(Request(1), PortalRequest("/device/getntsserverinfo", "qornsystem", "qornsystem", "",
                                      "<userId>qornsystem</userId><serverType>NTS</serverType>"));
}

TEST_F(RequestsTest, UserRequestsCarryTheirValuesUnescaped) {
  config_["account_enable_MIRLO_network_setting"] = "off";
  StartService();
  const std::string id = "ann<&>@x";
  const std::string code = cloud_->IssueCode(id);
  std::string uuid;
  service_->CreateUser(id, code, &uuid);
  log_.Take();
  // A body that is no XML is refused by the portal; what was sent is what counts here.
  ASSERT_TRUE(cloud_->WaitForRequests(2));
  EXPECT_EQ(Request(0), TokenRequest("&client_id=app-id&grant_type=authorization_code"
                                     "&service_type=M&client_secret=s3cret"
                                     "&physical_address_text=AA<&>CC&code=" +
                                     code));
  const std::string guid = cloud_->UserGuid(id);
  const std::string raw = Request(1);
  const std::string token =
      std::regex_replace(raw, std::regex("[^]*oauth_token=([^,]*),[^]*"), "$1");
  EXPECT_TRUE(cloud_->AcceptsToken(guid, token));
  EXPECT_EQ(raw,
            PortalRequest("/device/adduserdevice", guid, id, token,
                          "<userID>" + guid +
                              "</userID><deviceID></deviceID><deviceTypeCode>HGW</deviceTypeCode>"
                              "<deviceModelID>QG-1</deviceModelID><deviceUniqueID></deviceUniqueID>"
                              "<devicePhysicalAddressText>AA<&>CC</devicePhysicalAddressText>"
                              "<phoneNumberText></phoneNumberText><mobileCountryCode>"
                              "</mobileCountryCode><mobileNetworkCode></mobileNetworkCode>"
                              "<customerCode></customerCode><softwareVersion></softwareVersion>"
                              "<service>ACCOUNT</service>"));
}

TEST_F(RequestsTest, RefreshAndRemoval) {
  config_["account_enable_MIRLO_network_setting"] = "off";
  config_["account_device_physical_address_text"] = kGatewayAddress;
  StartService();
  const std::string uuid = MakeUser("ann@x");
  const std::vector<std::string> row =
      Sql("SELECT refreshToken FROM Users WHERE userUuid='" + uuid + "'");
  ASSERT_EQ(service_->RefreshAccessToken("ann@x"), 1);
  EXPECT_EQ(Request(0), TokenRequest("refresh_token=" + row.at(0) +
                                     "&client_id=app-id&grant_type=refresh_token&service_type=M"
                                     "&client_secret=s3cret&physical_address_text=AABBCC"));
  cloud_->ClearRequests();
  const std::string token = Sql("SELECT accessToken FROM Users").at(0);
  const std::string guid = cloud_->UserGuid("ann@x");
  ASSERT_EQ(service_->RemoveUser("ann@x", "ann@x"), 1);
  EXPECT_EQ(Request(0),
            PortalRequest("/device/deleteuserdevice", guid, "ann@x", token,
                          "<userID>" + guid +
                              "</userID><devicePhysicalAddressText>AABBCC"
                              "</devicePhysicalAddressText><service>ACCOUNT</service>"));
}

TEST_F(RequestsTest, TimestampIsTheClocksAndEveryNonceIsNew) {
  config_["account_enable_MIRLO_network_setting"] = "off";
  base::TestClock clock;
  StartService();
  MakeUser("ann@x");
  const std::string before = CurrentTimestamp();
  const std::regex parts("[^]*oauth_timestamp=([0-9]*), oauth_nonce=(5[^,]*),[^]*");
  for (const char* user : {"ben@x", "cid@x"}) {
    std::string uuid;
    ASSERT_EQ(service_->CreateUser(user, cloud_->IssueCode(user), &uuid), 1);
  }
  const std::string first = cloud_->requests().at(1).raw;
  const std::string second = cloud_->requests().at(3).raw;
  EXPECT_EQ(std::regex_replace(first, parts, "$1"), before);
  EXPECT_EQ(std::regex_replace(second, parts, "$1"), before);
  EXPECT_NE(std::regex_replace(first, parts, "$2"), std::regex_replace(second, parts, "$2"));
}

}  // namespace
}  // namespace account
